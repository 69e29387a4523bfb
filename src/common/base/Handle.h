#pragma once

#include <memory>

namespace voxtrel {

/// Calls a library's function that frees an object.
template <auto kFree>
struct FreedBy {
  template <typename Object>
  void operator()(Object* object) const {
    kFree(object);
  }
};

/// Owns an object of a C library, for example `Handle<CURL, curl_easy_cleanup>`.
template <typename Object, auto kFree>
using Handle = std::unique_ptr<Object, FreedBy<kFree>>;

}  // namespace voxtrel
