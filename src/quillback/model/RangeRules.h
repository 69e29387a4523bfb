#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace voxtrel::quillback {

/// Status and headers of a server's final reply, after redirects.
struct HttpReply {
  int status = 0;
  std::optional<std::string> contentRange;
  std::optional<std::uint64_t> contentLength;
  std::string etag;              ///< empty if missing or no header value
  std::string lastModified;      ///< likewise
  std::string contentType = {};  ///< likewise
};

/// Whether `value` may be sent as a header's value: short and printable.
bool isHeaderValue(std::string_view value);

/// The value of If-Range for the version of a file; empty if neither can be used.
std::string ifRangeOf(std::string_view etag, std::string_view lastModified);

/// Whether a Content-Type names a page for people.
bool isWebPage(std::string_view contentType);

/// A Content-Range: bytes `first` to `last`, both included, of `totalBytes`.
struct ContentRange {
  std::uint64_t first = 0;
  std::uint64_t last = 0;
  std::uint64_t totalBytes = 0;

  bool operator==(const ContentRange&) const = default;
};

/// Nothing unless all three numbers are given and consistent.
std::optional<ContentRange> parseContentRange(std::string_view text);

/// What was requested: all bytes from `offset` on.
struct RangeRequest {
  std::uint64_t offset = 0;      ///< 0: no range, the whole file
  std::uint64_t totalBytes = 0;  ///< of the whole file, as pinned
  std::string etag;              ///< of the file that the first `offset` bytes are from; or empty
};

enum class ReplyAction {
  append,     ///< the body continues the part
  restart,    ///< the body is the whole file: compare the part with it
  refetch,    ///< the reply cannot be trusted: request the whole file and compare the part with it
  retry,      ///< a temporary error
  wrongFile,  ///< the server has a file of another size
  webPage,    ///< a page in place of the file, as a proxy or a login page sends
  refuse,     ///< a reply without the file
};

/// What to do with a reply before its body is read.
ReplyAction judgeReply(const RangeRequest& request, const HttpReply& reply);

}  // namespace voxtrel::quillback
