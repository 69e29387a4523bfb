#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace voxtrel::quillback {

/// The names of the recognisers in a manifest.
inline constexpr std::string_view kWhisper = "whisper";
inline constexpr std::string_view kPocketSphinx = "pocketsphinx";

/// What a model's "manifest.json" says. The file is written last and in one piece, so that its being
/// there means that everything it names is there:
///
///   {
///     "format": 1,
///     "model": "large-v3",
///     "recogniser": "whisper",
///     "files": [{"name": "ggml-large-v3.bin", "size": 3095033483, "sha256": "64d1…"}],
///     "written_by": "quillback 0.1.0"
///   }
///
/// With the recogniser "pocketsphinx", which a build without Whisper embeds, `files` is empty. Other
/// members are ignored; another format is not read.
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

  bool operator==(const Manifest&) const = default;
};

/// Longest manifest that is read.
inline constexpr std::size_t kMaxManifestBytes = 65'536;

/// Whether `name` is a file's name that stays in its folder.
bool isPlainFileName(std::string_view name);
/// Whether `text` is 64 lower-case hexadecimal digits.
bool isSha256(std::string_view text);

/// The manifest that `text` holds, or what is wrong with it: half a sentence, "it …".
std::variant<Manifest, std::string> parseManifest(std::string_view text);
/// The file's text, which ends in a line feed.
std::string formatManifest(const Manifest& manifest);

}  // namespace voxtrel::quillback
