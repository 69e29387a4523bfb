#include "quillback/model/HttpTransfer.h"

#include <curl/curl.h>

#include <array>
#include <optional>
#include <utility>

#include "common/base/Handle.h"

namespace voxtrel::quillback {

namespace {

using Clock = std::chrono::steady_clock;
using Result = tl::expected<void, HttpFailure>;

constexpr int kPollMs = 200;

Result failure(HttpFailure::Kind kind, bool isRetryable = false, std::string why = {}) {
  return tl::unexpected(HttpFailure{kind, isRetryable, std::move(why)});
}

/// One transfer and the library's callbacks for it.
/// Thread: one.  Owns: the library's handles.  Borrows: the listener.
class Transfer {
 public:
  Transfer(const HttpRequest& request, const TransferLimits& limits, const HttpListener& listener)
      : listener_(listener), stall_(limits.stallTimeout, Clock::now()), easy_(curl_easy_init()) {
    setUp(request, limits);
  }

  Result run(const StopSignals& stop);

 private:
  template <typename Value>
  void set(CURLoption option, Value value) {
    curl_easy_setopt(easy_.get(), option, value);
  }
  void setUp(const HttpRequest& request, const TransferLimits& limits);
  bool onBody(std::span<const char> bytes);
  bool showReply();
  HttpReply readReply() const;
  std::optional<std::string> header(const char* name) const;
  Result drive(CURLM* multi, const StopSignals& stop);
  Result resultOf(CURLcode code);

  const HttpListener& listener_;
  StallWatch stall_;
  bool isReplyShown_ = false;
  bool isRejected_ = false;
  std::array<char, CURL_ERROR_SIZE> error_{};
  Handle<curl_slist, curl_slist_free_all> headers_;
  Handle<CURL, curl_easy_cleanup> easy_;
};

void Transfer::setUp(const HttpRequest& request, const TransferLimits& limits) {
  const char* protocols = request.url.starts_with("https:") ? "https" : "http,https";
  set(CURLOPT_URL, request.url.c_str());
  set(CURLOPT_PROTOCOLS_STR, protocols);
  set(CURLOPT_REDIR_PROTOCOLS_STR, protocols);
  set(CURLOPT_FOLLOWLOCATION, 1L);
  set(CURLOPT_MAXREDIRS, static_cast<long>(limits.maxRedirects));
  set(CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(limits.connectTimeout.count()));
  set(CURLOPT_NOSIGNAL, 1L);
  set(CURLOPT_ERRORBUFFER, error_.data());
  set(CURLOPT_USERAGENT, request.userAgent.c_str());
  if (!request.certificates.empty()) set(CURLOPT_CAINFO, request.certificates.c_str());
  if (request.offset > 0) {
    set(CURLOPT_RANGE, (std::to_string(request.offset) + "-").c_str());
    if (!request.ifRange.empty()) {
      headers_.reset(curl_slist_append(nullptr, ("If-Range: " + request.ifRange).c_str()));
      set(CURLOPT_HTTPHEADER, headers_.get());
    }
  }

  using Callback = size_t (*)(char*, size_t, size_t, void*);
  const Callback onBodyBytes = [](char* data, size_t, size_t count, void* self) -> size_t {
    // Any number other than `count` ends the transfer.
    return static_cast<Transfer*>(self)->onBody({data, count}) ? count : count + 1;
  };
  set(CURLOPT_WRITEFUNCTION, onBodyBytes);
  set(CURLOPT_WRITEDATA, static_cast<void*>(this));
}

bool Transfer::onBody(std::span<const char> bytes) {
  stall_.onBytes(bytes.size(), Clock::now());
  if (!showReply() || !listener_.onBody(bytes)) isRejected_ = true;
  return !isRejected_;
}

/// Shows the listener the reply, the first time; false if it was rejected.
bool Transfer::showReply() {
  if (std::exchange(isReplyShown_, true)) return true;
  return listener_.onReply(readReply());
}

HttpReply Transfer::readReply() const {
  long status = 0;
  curl_off_t length = -1;
  curl_easy_getinfo(easy_.get(), CURLINFO_RESPONSE_CODE, &status);
  curl_easy_getinfo(easy_.get(), CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &length);
  HttpReply reply;
  reply.status = static_cast<int>(status);
  if (length >= 0) reply.contentLength = static_cast<std::uint64_t>(length);
  reply.contentRange = header("Content-Range");
  if (const auto etag = header("ETag"); etag && isHeaderValue(*etag)) reply.etag = *etag;
  if (const auto time = header("Last-Modified"); time && isHeaderValue(*time)) {
    reply.lastModified = *time;
  }
  if (const auto type = header("Content-Type"); type && isHeaderValue(*type)) {
    reply.contentType = *type;
  }
  return reply;
}

/// The last header with this name in the final reply.
std::optional<std::string> Transfer::header(const char* name) const {
  constexpr int kFinalReply = -1;
  curl_header* found = nullptr;
  const auto find = [&](std::size_t index) {
    return curl_easy_header(easy_.get(), name, index, CURLH_HEADER, kFinalReply, &found);
  };
  if (find(0) != CURLHE_OK || find(found->amount - 1) != CURLHE_OK) return std::nullopt;
  return found->value;
}

Result Transfer::resultOf(CURLcode code) {
  if (code == CURLE_OK && !showReply()) isRejected_ = true;
  if (isRejected_) return failure(HttpFailure::Kind::rejected);
  if (code == CURLE_OK) return {};
  const std::string why = error_.front() != '\0' ? error_.data() : curl_easy_strerror(code);
  switch (code) {
    case CURLE_UNSUPPORTED_PROTOCOL:
    case CURLE_TOO_MANY_REDIRECTS:
    case CURLE_WEIRD_SERVER_REPLY:
    case CURLE_URL_MALFORMAT:
    case CURLE_BAD_CONTENT_ENCODING:
      return failure(HttpFailure::Kind::refused, false, why);
    case CURLE_COULDNT_RESOLVE_PROXY:
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_CONNECT:
    case CURLE_OPERATION_TIMEDOUT:  // the only timeout that the library has is for connecting
      return failure(HttpFailure::Kind::unreachable, true, why);
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_OUT_OF_MEMORY:
    case CURLE_FAILED_INIT:
      return failure(HttpFailure::Kind::network, false, why);
    default:
      return failure(HttpFailure::Kind::network, true, why);
  }
}

Result Transfer::drive(CURLM* multi, const StopSignals& stop) {
  for (int running = 1; running > 0;) {
    if (stop.isRequested()) return failure(HttpFailure::Kind::interrupted);
    if (curl_multi_perform(multi, &running) != CURLM_OK) {
      return failure(HttpFailure::Kind::network, false, "the HTTP library failed");
    }
    int queued = 0;
    while (const CURLMsg* message = curl_multi_info_read(multi, &queued)) {
      if (message->msg == CURLMSG_DONE) return resultOf(message->data.result);
    }
    if (stall_.isStalled(Clock::now())) {
      return failure(HttpFailure::Kind::network, true, "nothing arrives any more");
    }
    curl_waitfd stopHandle{stop.descriptor(), CURL_WAIT_POLLIN, 0};
    curl_multi_poll(multi, &stopHandle, 1, kPollMs, nullptr);
  }
  return failure(HttpFailure::Kind::network, true, "the transfer ended without a result");
}

Result Transfer::run(const StopSignals& stop) {
  const Handle<CURLM, curl_multi_cleanup> multi(curl_multi_init());
  curl_multi_add_handle(multi.get(), easy_.get());
  Result result = drive(multi.get(), stop);
  // Looking up a host name can take long and cannot be cancelled: do not wait for its thread.
  if (!result && result.error().kind == HttpFailure::Kind::interrupted) set(CURLOPT_QUICK_EXIT, 1L);
  curl_multi_remove_handle(multi.get(), easy_.get());
  return result;
}

}  // namespace

HttpLibrary::HttpLibrary() : isReady_(curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK) {}

HttpLibrary::~HttpLibrary() {
  if (isReady_) curl_global_cleanup();
}

Result transfer(const HttpRequest& request, const TransferLimits& limits, const StopSignals& stop,
                const HttpListener& listener) {
  return Transfer(request, limits, listener).run(stop);
}

}  // namespace voxtrel::quillback
