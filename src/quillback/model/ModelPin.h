#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace voxtrel::quillback {

/// A file that setup downloads: its address, size and hash.
struct ModelPin {
  std::string model;     ///< as named in the settings
  std::string fileName;  ///< in the model's folder
  std::uint64_t sizeBytes = 0;
  std::string sha256;
  std::string baseUrl;  ///< scheme and host; QUILLBACK_MODEL_URL replaces it
  std::string path;     ///< begins with the slash after the host
};

/// The models that this version knows.
const std::vector<ModelPin>& pinnedModels();

/// Whether `url` begins with "http://" or "https://" and a host, and contains no blanks.
bool isBaseUrl(std::string_view url);
/// Host and port of such a URL, without user and password.
std::string hostOf(std::string_view url);

}  // namespace voxtrel::quillback
