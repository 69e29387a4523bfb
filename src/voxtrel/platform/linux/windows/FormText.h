#pragma once

#include <QString>
#include <string_view>

namespace voxtrel {

QString formText(std::string_view utf8);

/// `text` for a label or a button, so that it reads as it is: Qt takes an ampersand for the mark of
/// an access key. The first `accessKey` in it becomes that key; '\0': none.
QString controlText(std::string_view text, char accessKey = '\0');

}  // namespace voxtrel
