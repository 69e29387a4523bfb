#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <span>
#include <string>

#include <tl/expected.hpp>

#include "common/posix/StopSignals.h"
#include "quillback/model/RangeRules.h"

namespace voxtrel::quillback {

/// Keeps the HTTP library initialised while it exists.
/// Thread: any.
class HttpLibrary {
 public:
  HttpLibrary();
  HttpLibrary(const HttpLibrary&) = delete;
  HttpLibrary& operator=(const HttpLibrary&) = delete;
  ~HttpLibrary();

 private:
  bool isReady_;
};

/// Timeouts and limits of a download.
struct TransferLimits {
  std::chrono::milliseconds connectTimeout = std::chrono::seconds(20);
  std::chrono::milliseconds stallTimeout = std::chrono::seconds(30);  ///< below 1 KB/s
  int maxRedirects = 10;
  int maxTries = 4;  ///< in a row, without much progress
  std::chrono::milliseconds retryDelay = std::chrono::seconds(2);  ///< doubles with each retry
};

/// Detects a transfer that stays below 1 KB/s for the time of `limit`.
/// Thread: one.
class StallWatch {
 public:
  using TimePoint = std::chrono::steady_clock::time_point;

  StallWatch(std::chrono::milliseconds limit, TimePoint now) : limit_(limit), since_(now) {}

  void onBytes(std::uint64_t count, TimePoint now) {
    bytes_ += count;
    // 1 KB/s is one byte for each millisecond.
    if (bytes_ < static_cast<std::uint64_t>(limit_.count())) return;
    bytes_ = 0;
    since_ = now;
  }
  bool isStalled(TimePoint now) const { return now - since_ >= limit_; }

 private:
  std::chrono::milliseconds limit_;
  TimePoint since_;          ///< when enough bytes had last arrived
  std::uint64_t bytes_ = 0;  ///< since then
};

/// A request for a file or the rest of it.
struct HttpRequest {
  std::string url;           ///< redirects may leave https only if this is not https
  std::uint64_t offset = 0;  ///< if not 0, requests the bytes from there on
  std::string ifRange;       ///< the version that the bytes must be from; may be empty
  std::string certificates;  ///< file of trusted authorities; empty: the system's
  std::string userAgent;
};

/// Receives the reply. A function that returns false ends the transfer.
struct HttpListener {
  std::function<bool(const HttpReply& reply)> onReply;  ///< once, before the body
  std::function<bool(std::span<const char> bytes)> onBody;
};

struct HttpFailure {
  enum class Kind {
    rejected,     ///< the listener returned false
    interrupted,  ///< a stop was requested
    unreachable,  ///< no connection could be made
    network,      ///< the connection failed
    refused,      ///< the reply, or where it redirects to, is not acceptable
  };

  Kind kind = Kind::network;
  bool isRetryable = false;
  std::string why;  ///< half a sentence
};

/// Sends `request` and follows redirects, through the proxies of the environment. Succeeds when the
/// body ends where the server said.
/// Thread: any, which it blocks.  Borrows: HttpLibrary (must exist).
tl::expected<void, HttpFailure> transfer(const HttpRequest& request, const TransferLimits& limits,
                                         const StopSignals& stop, const HttpListener& listener);

}  // namespace voxtrel::quillback
