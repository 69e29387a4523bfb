#include "voxtrel/platform/linux/tray/MenuText.h"

namespace voxtrel {

namespace {

QString withDoubled(QLatin1Char mark, std::string_view title) {
  QString text = QString::fromUtf8(title.data(), static_cast<qsizetype>(title.size()));
  return text.replace(mark, QString(2, mark));
}

}  // namespace

QString trayHostLabel(std::string_view title) {
  return withDoubled(QLatin1Char('_'), title);
}

QString widgetText(std::string_view title) {
  return withDoubled(QLatin1Char('&'), title);
}

}  // namespace voxtrel
