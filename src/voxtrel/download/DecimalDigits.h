#pragma once

#include <cstddef>
#include <string_view>

namespace voxtrel {

/// Bytes of the decimal digit (Unicode general category Nd, version 15) at the start of UTF-8 text,
/// 0 if there is none.
std::size_t decimalDigitLength(std::string_view text);

}  // namespace voxtrel
