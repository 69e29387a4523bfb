#include "voxtrel/supervisor/Uuid.h"

#include <array>
#include <cstddef>
#include <random>
#include <string_view>

namespace voxtrel {

std::string randomUuid() {
  constexpr std::string_view kPattern = "xxxxxxxx-xxxx-4xxx-yxxx-xxxxxxxxxxxx";
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::random_device device;
  std::uniform_int_distribution<std::size_t> anyDigit(0, 15);
  std::uniform_int_distribution<std::size_t> variantDigit(8, 11);
  std::string uuid(kPattern);
  for (char& digit : uuid) {
    if (digit == 'x') digit = kDigits[anyDigit(device)];
    if (digit == 'y') digit = kDigits[variantDigit(device)];
  }
  return uuid;
}

}  // namespace voxtrel
