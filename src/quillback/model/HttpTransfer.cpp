#include "quillback/model/HttpTransfer.h"

#include <curl/curl.h>

#include <algorithm>
#include <array>
#include <memory>

#include "quillback/model/PartRecord.h"
#include "quillback/model/StallWatch.h"

namespace voxtrel::quillback {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kPollLimit(200);

struct FreeEasy {
  void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
};
struct FreeMulti {
  void operator()(CURLM* handle) const { curl_multi_cleanup(handle); }
};
struct FreeList {
  void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};

/// One transfer with everything that the library calls back for.
class Transfer {
 public:
  Transfer(const HttpRequest& request, const TransferLimits& limits, const HttpListener& listener)
      : listener_(listener), stall_(limits.stall, Clock::now()), easy_(curl_easy_init()) {
    setUp(request, limits);
  }

  HttpEnd run(const StopSignals& stop);

 private:
  template <typename Value>
  void set(CURLoption option, Value value) {
    curl_easy_setopt(easy_.get(), option, value);
  }
  void setUp(const HttpRequest& request, const TransferLimits& limits);
  void onHeader(std::string_view line);
  bool onBody(std::span<const char> bytes);
  /// Shows the listener the reply, unless it has been shown.
  bool showReply();
  HttpEnd endOf(CURLcode code);
  HttpEnd drive(CURLM* multi, const StopSignals& stop);

  const HttpListener& listener_;
  StallWatch stall_;
  HttpReply reply_;
  bool isReplyShown_ = false;
  bool isDropped_ = false;
  std::array<char, CURL_ERROR_SIZE> error_{};
  std::unique_ptr<curl_slist, FreeList> headers_;
  std::unique_ptr<CURL, FreeEasy> easy_;
};

void Transfer::setUp(const HttpRequest& request, const TransferLimits& limits) {
  const char* protocols = request.url.starts_with("https:") ? "https" : "http,https";
  set(CURLOPT_URL, request.url.c_str());
  set(CURLOPT_PROTOCOLS_STR, protocols);
  set(CURLOPT_REDIR_PROTOCOLS_STR, protocols);
  set(CURLOPT_FOLLOWLOCATION, 1L);
  set(CURLOPT_MAXREDIRS, static_cast<long>(limits.redirects));
  set(CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(limits.connect.count()));
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
  const Callback onHeaderBytes = [](char* data, size_t, size_t count, void* self) {
    static_cast<Transfer*>(self)->onHeader({data, count});
    return count;
  };
  const Callback onBodyBytes = [](char* data, size_t, size_t count, void* self) -> size_t {
    // Any other number than that of the bytes ends the transfer.
    return static_cast<Transfer*>(self)->onBody({data, count}) ? count : count + 1;
  };
  set(CURLOPT_HEADERFUNCTION, onHeaderBytes);
  set(CURLOPT_HEADERDATA, static_cast<void*>(this));
  set(CURLOPT_WRITEFUNCTION, onBodyBytes);
  set(CURLOPT_WRITEDATA, static_cast<void*>(this));
}

void Transfer::onHeader(std::string_view line) {
  // Every answer on the way, redirects too, begins with such a line.
  if (line.starts_with("HTTP/")) {
    reply_ = HttpReply();
    return;
  }
  const std::size_t colon = line.find(':');
  if (colon == std::string_view::npos) return;
  std::string name(line.substr(0, colon));
  std::ranges::transform(name, name.begin(), [](char c) {
    return static_cast<char>(c >= 'A' && c <= 'Z' ? c | 0x20 : c);
  });
  std::string_view value = line.substr(colon + 1);
  while (!value.empty() && value.front() == ' ') value.remove_prefix(1);
  while (!value.empty() && std::string_view(" \r\n").find(value.back()) != std::string_view::npos) {
    value.remove_suffix(1);
  }
  if (name == "content-range") reply_.contentRange = value;
  if (!isHeaderValue(value)) return;
  if (name == "etag") reply_.etag = value;
  if (name == "last-modified") reply_.lastModified = value;
}

bool Transfer::onBody(std::span<const char> bytes) {
  stall_.onBytes(bytes.size(), Clock::now());
  if (!showReply() || !listener_.onBody(bytes)) isDropped_ = true;
  return !isDropped_;
}

bool Transfer::showReply() {
  if (isReplyShown_) return true;
  isReplyShown_ = true;
  long status = 0;
  curl_off_t length = -1;
  curl_easy_getinfo(easy_.get(), CURLINFO_RESPONSE_CODE, &status);
  curl_easy_getinfo(easy_.get(), CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &length);
  reply_.status = static_cast<int>(status);
  if (length >= 0) reply_.contentLength = static_cast<std::uint64_t>(length);
  return listener_.onReply(reply_);
}

HttpEnd Transfer::endOf(CURLcode code) {
  using Kind = HttpEnd::Kind;
  if (code == CURLE_OK && !showReply()) isDropped_ = true;
  if (isDropped_) return {Kind::dropped, false, {}};
  if (code == CURLE_OK) return {Kind::complete, false, {}};
  const std::string why = error_.front() != '\0' ? error_.data() : curl_easy_strerror(code);
  switch (code) {
    case CURLE_UNSUPPORTED_PROTOCOL:
    case CURLE_TOO_MANY_REDIRECTS:
    case CURLE_WEIRD_SERVER_REPLY:
    case CURLE_URL_MALFORMAT:
    case CURLE_BAD_CONTENT_ENCODING:
      return {Kind::refused, false, why};
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_OUT_OF_MEMORY:
    case CURLE_FAILED_INIT:
      return {Kind::network, false, why};
    default:
      return {Kind::network, true, why};
  }
}

HttpEnd Transfer::drive(CURLM* multi, const StopSignals& stop) {
  for (int running = 1; running > 0;) {
    if (stop.isRequested()) return {HttpEnd::Kind::interrupted, false, {}};
    if (curl_multi_perform(multi, &running) != CURLM_OK) {
      return {HttpEnd::Kind::network, false, "the HTTP library failed"};
    }
    int queued = 0;
    while (const CURLMsg* message = curl_multi_info_read(multi, &queued)) {
      if (message->msg == CURLMSG_DONE) return endOf(message->data.result);
    }
    if (stall_.isStalled(Clock::now())) {
      return {HttpEnd::Kind::network, true, "nothing arrives any more"};
    }
    curl_waitfd stopHandle{stop.descriptor(), CURL_WAIT_POLLIN, 0};
    curl_multi_poll(multi, &stopHandle, 1, static_cast<int>(kPollLimit.count()), nullptr);
  }
  return {HttpEnd::Kind::network, true, "the transfer ended without a result"};
}

HttpEnd Transfer::run(const StopSignals& stop) {
  const std::unique_ptr<CURLM, FreeMulti> multi(curl_multi_init());
  curl_multi_add_handle(multi.get(), easy_.get());
  HttpEnd end = drive(multi.get(), stop);
  // A name's look-up can last long and cannot be cancelled: nobody waits for its thread.
  if (end.kind == HttpEnd::Kind::interrupted) set(CURLOPT_QUICK_EXIT, 1L);
  curl_multi_remove_handle(multi.get(), easy_.get());
  return end;
}

}  // namespace

HttpEnd transfer(const HttpRequest& request, const TransferLimits& limits, const StopSignals& stop,
                 const HttpListener& listener) {
  return Transfer(request, limits, listener).run(stop);
}

}  // namespace voxtrel::quillback
