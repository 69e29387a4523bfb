#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "quillback/model/HttpReply.h"

namespace voxtrel::quillback {

/// What a Content-Range says: bytes `first` to `last`, both included, of a file of `totalBytes`.
struct ContentRange {
  std::uint64_t first = 0;
  std::uint64_t last = 0;
  std::uint64_t totalBytes = 0;

  bool operator==(const ContentRange&) const = default;
};

/// Nothing unless all three numbers are there and fit each other.
std::optional<ContentRange> parseContentRange(std::string_view text);

/// What was asked of the server: everything from `offset` on.
struct RangeAsk {
  std::uint64_t offset = 0;      ///< 0: no range was asked for
  std::uint64_t totalBytes = 0;  ///< of the whole file, as pinned
  std::string etag;              ///< of the file that the first `offset` bytes are from; or empty
};

enum class ReplyAction {
  append,     ///< the body goes on where the part ends
  restart,    ///< the body is the whole file: the part is emptied first
  askAnew,    ///< the answer cannot be trusted: the part is emptied, and the whole file asked for
  retry,      ///< a fault that may pass
  wrongFile,  ///< the server has another file
  refuse,     ///< an answer without the file
};

/// What to do with the server's answer, before its body is read.
ReplyAction judgeReply(const RangeAsk& ask, const HttpReply& reply);

/// The value of If-Range for a file with these; empty where neither serves.
std::string ifRangeOf(std::string_view etag, std::string_view lastModified);

}  // namespace voxtrel::quillback
