#include "quillback/model/Sha256.h"

#include <array>
#include <cstdio>
#include <cstdlib>

namespace voxtrel::quillback {

namespace {

void require(int done) {
  if (done == 1) return;
  std::fputs("SHA-256 is not available\n", stderr);
  std::abort();
}

}  // namespace

Sha256::Sha256() : context_(EVP_MD_CTX_new()) {
  reset();
}

void Sha256::add(std::span<const char> bytes) {
  require(EVP_DigestUpdate(context_.get(), bytes.data(), bytes.size()));
}

void Sha256::reset() {
  require(EVP_DigestInit_ex(context_.get(), EVP_sha256(), nullptr));
}

std::string Sha256::digest() const {
  const std::unique_ptr<EVP_MD_CTX, Free> copy(EVP_MD_CTX_new());
  require(EVP_MD_CTX_copy_ex(copy.get(), context_.get()));
  std::array<unsigned char, EVP_MAX_MD_SIZE> bytes{};
  unsigned int length = 0;
  require(EVP_DigestFinal_ex(copy.get(), bytes.data(), &length));
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text;
  for (const unsigned char byte : std::span(bytes).first(length)) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 0xf];
  }
  return text;
}

}  // namespace voxtrel::quillback
