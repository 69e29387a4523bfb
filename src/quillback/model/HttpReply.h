#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace voxtrel::quillback {

/// The head of a server's last answer, after redirects.
struct HttpReply {
  int status = 0;
  std::optional<std::string> contentRange;
  std::optional<std::uint64_t> contentLength;
  std::string etag;
  std::string lastModified;
};

}  // namespace voxtrel::quillback
