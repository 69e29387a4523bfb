#pragma once

#include <string_view>

namespace voxtrel {

/// Writes all bytes, in as many calls as it takes. False: errno says why.
[[nodiscard]] bool writeAll(int descriptor, std::string_view bytes);

}  // namespace voxtrel
