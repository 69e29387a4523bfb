#include "voxtrel/platform/linux/windows/FormText.h"

namespace voxtrel {

QString formText(std::string_view utf8) {
  return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
}

QString controlText(std::string_view text, char accessKey) {
  const QChar key = QLatin1Char(accessKey);
  QString result;
  bool isMarked = accessKey == '\0';
  for (const QChar character : formText(text)) {
    if (!isMarked && character == key) {
      result += '&';
      isMarked = true;
    }
    result += character;
    if (character == '&') result += '&';
  }
  return result;
}

}  // namespace voxtrel
