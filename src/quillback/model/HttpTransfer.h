#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>

#include "common/posix/StopSignals.h"
#include "quillback/model/HttpReply.h"

namespace voxtrel::quillback {

/// How patient a download is.
struct TransferLimits {
  std::chrono::milliseconds connect = std::chrono::seconds(20);
  std::chrono::milliseconds stall = std::chrono::seconds(30);  ///< of less than 1 KB/s
  int redirects = 10;
  int tries = 4;  ///< in a row without much having arrived
  std::chrono::milliseconds beforeRetry = std::chrono::seconds(2);  ///< doubles with each try
};

/// One request for a file, or for the rest of it.
struct HttpRequest {
  std::string url;           ///< redirects leave https only if this is not https
  std::uint64_t offset = 0;  ///< not 0: asks for the bytes from there on
  std::string ifRange;       ///< asks for them only of this version of the file; or empty
  std::string certificates;  ///< file of the authorities to trust; empty: the system's
  std::string userAgent;
};

/// What came of a request.
struct HttpEnd {
  enum class Kind {
    complete,     ///< as long as the server said, where it said
    dropped,      ///< a listener wanted no more
    interrupted,  ///< by a signal
    network,      ///< the connection failed
    refused,      ///< the server's answer, or where it led, cannot be followed
  };

  Kind kind = Kind::complete;
  bool mayPass = false;  ///< trying again may help
  std::string why;       ///< half a sentence
};

/// The server's answer as it comes; each says whether to go on.
struct HttpListener {
  std::function<bool(const HttpReply& reply)> onReply;  ///< once, before the body
  std::function<bool(std::span<const char> bytes)> onBody;
};

/// Sends `request` and follows redirects; the proxies are those of the environment.
/// Thread: any, which it blocks; HttpLibrary must live.
HttpEnd transfer(const HttpRequest& request, const TransferLimits& limits, const StopSignals& stop,
                 const HttpListener& listener);

}  // namespace voxtrel::quillback
