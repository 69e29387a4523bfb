#pragma once

#include <curl/curl.h>

namespace voxtrel::quillback {

/// The HTTP library is ready for use while this lives.
/// Thread: any.
class HttpLibrary {
 public:
  HttpLibrary() : isReady_(curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK) {}
  HttpLibrary(const HttpLibrary&) = delete;
  HttpLibrary& operator=(const HttpLibrary&) = delete;
  ~HttpLibrary() {
    if (isReady_) curl_global_cleanup();
  }

 private:
  bool isReady_;
};

}  // namespace voxtrel::quillback
