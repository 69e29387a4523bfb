#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace voxtrel::quillback {

/// Which library loads the weights.
enum class ModelFamily { whisper, parakeet };

/// What a model understands.
enum class Languages { all, english, european };

/// A file that setup downloads: its address, size and hash.
struct FilePin {
  std::string name;  ///< in the model's folder
  std::uint64_t sizeBytes = 0;
  std::string sha256;
  std::string path;  ///< on the server; begins with a slash
};

/// A model that setup knows.
struct ModelPin {
  std::string model;  ///< as named in the settings
  ModelFamily family = ModelFamily::whisper;
  FilePin weights;
  Languages languages = Languages::all;
  std::uint64_t memoryBytes = 0;  ///< while it recognises, roughly
  double seconds = 0.0;      ///< for five seconds of speech, on two cores of the reference machine
  std::string licence = {};  ///< to be named where the model is offered; empty: as free as ours
};

/// The address before a file's path; QUILLBACK_MODEL_URL replaces it.
inline constexpr std::string_view kModelServer = "https://huggingface.co";

/// The models that this version knows, from the least to the most accurate.
const std::vector<ModelPin>& pinnedModels();
/// The model in `pins` with this name; null if there is none.
const ModelPin* pinNamed(const std::vector<ModelPin>& pins, std::string_view name);
/// The names of all `pins`, with blanks between them.
std::string namesOf(const std::vector<ModelPin>& pins);

/// The weights of the voice detection, which come along with each model.
const FilePin& voiceDetectionPin();

/// "99 languages", for people.
std::string_view describe(Languages languages);

/// Whether `url` begins with "http://" or "https://" and a host, and contains no blanks.
bool isBaseUrl(std::string_view url);
/// Host and port of such a URL, without user and password.
std::string hostOf(std::string_view url);

}  // namespace voxtrel::quillback
