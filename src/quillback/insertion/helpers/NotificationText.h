#pragma once

#include <string>
#include <string_view>

namespace voxtrel::quillback {

/// `text` as the body that notify-send shows it as it is: neither its backslashes nor its angle
/// brackets mean anything, and a long text is cut at the end of a character.
std::string notificationBody(std::string_view text);

}  // namespace voxtrel::quillback
