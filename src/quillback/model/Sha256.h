#pragma once

#include <openssl/evp.h>

#include <memory>
#include <span>
#include <string>

namespace voxtrel::quillback {

/// The SHA-256 of bytes that arrive one after the other.
/// Thread: one at a time.  Owns: the library's context.
/// Fails by: aborting, where memory is gone.
class Sha256 {
 public:
  Sha256();

  void add(std::span<const char> bytes);
  /// Back to no bytes at all.
  void reset();
  /// 64 lower-case hexadecimal digits; more bytes may follow.
  std::string digest() const;

 private:
  struct Free {
    void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
  };
  std::unique_ptr<EVP_MD_CTX, Free> context_;
};

}  // namespace voxtrel::quillback
