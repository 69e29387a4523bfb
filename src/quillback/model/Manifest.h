#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <tl/expected.hpp>

#include "quillback/model/ModelPin.h"

namespace voxtrel::quillback {

/// The names of the recognisers in a manifest.
inline constexpr std::string_view kWhisper = "whisper";
inline constexpr std::string_view kParakeet = "parakeet";
inline constexpr std::string_view kPocketSphinx = "pocketsphinx";

/// The content of a model's "manifest.json". The file is written last and atomically, so if it
/// exists, everything that it names exists:
///
///   {
///     "format": 1,
///     "model": "large-v3",
///     "recogniser": "whisper",
///     "files": [{"name": "ggml-large-v3.bin", "size": 3095033483, "sha256": "64d1…"},
///               {"name": "ggml-silero-v6.2.0.bin", "size": 885098, "sha256": "2aa2…"}],
///     "written_by": "quillback 0.1.0"
///   }
///
/// The weights come first; the voice detection follows or is missing. For the recogniser
/// "pocketsphinx" (a build without Whisper), `files` is empty. It is empty as well where "chosen"
/// names the model that was set up in this one's place. "custom" is true for weights that the user
/// brought. Other members are ignored; other formats are refused.
struct Manifest {
  struct File {
    std::string name;  ///< within the model's folder; never a path
    std::uint64_t sizeBytes = 0;
    std::string sha256;  ///< 64 lower-case hexadecimal digits

    bool operator==(const File&) const = default;
  };

  std::string model;
  std::string recogniser;
  std::vector<File> files;
  std::string writtenBy;
  std::string chosen = {};  ///< the model that was set up in this one's place; empty: none
  bool isCustom = false;    ///< the user's own weights

  bool operator==(const Manifest&) const = default;
};

/// Longer manifests are refused.
inline constexpr std::size_t kMaxManifestBytes = 65'536;

/// Longer names of models are refused.
inline constexpr std::size_t kMaxModelNameBytes = 64;

/// Whether `name` may name a model: letters, digits, '.', '-' and '_', and no '.' at its beginning.
bool isModelName(std::string_view name);
/// Whether `name` is a file name without a path.
bool isPlainFileName(std::string_view name);
/// Whether `text` is 64 lower-case hexadecimal digits.
bool isSha256(std::string_view text);

/// The name of a family's recogniser in a manifest, and back; nothing for "pocketsphinx".
std::string_view recogniserOf(ModelFamily family);
std::optional<ModelFamily> familyOf(std::string_view recogniser);

/// Fails by: what is wrong with the text, as half a sentence: "it …".
tl::expected<Manifest, std::string> parseManifest(std::string_view text);
/// The file's text, with a newline at its end.
std::string formatManifest(const Manifest& manifest);

}  // namespace voxtrel::quillback
