#pragma once

#include <string>
#include <string_view>

namespace voxtrel::quillback {

/// `text` as one line of valid UTF-8: newlines of all kinds and control characters become blanks, and
/// what is no UTF-8 becomes U+FFFD, because a reader drops all that arrives together with such bytes.
std::string oneLine(std::string_view text);

/// The same without blanks at its ends.
std::string trimmedLine(std::string_view text);

}  // namespace voxtrel::quillback
