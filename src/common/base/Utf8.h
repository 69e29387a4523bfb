#pragma once

#include <string_view>

namespace voxtrel {

/// Whether `bytes` is well-formed UTF-8 as RFC 3629 defines it: no overlong forms, no surrogates,
/// nothing above U+10FFFF. Empty text is well-formed.
bool isValidUtf8(std::string_view bytes);

}  // namespace voxtrel
