#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace voxtrel::quillback {

/// One file that setup downloads: where it is, and what it must be to the bit.
struct ModelPin {
  std::string model;     ///< as it is named in the settings
  std::string fileName;  ///< in the model's folder
  std::uint64_t sizeBytes = 0;
  std::string sha256;
  std::string baseUrl;  ///< scheme and host; QUILLBACK_MODEL_URL takes its place
  std::string path;     ///< from the slash after the host
};

/// The models that this version knows.
const std::vector<ModelPin>& pinnedModels();

/// Whether `url` is "http://" or "https://", a host and perhaps more, without blanks.
bool isBaseUrl(std::string_view url);
/// Host and port of such a URL, for people to read: without user and password.
std::string hostOf(std::string_view url);

}  // namespace voxtrel::quillback
