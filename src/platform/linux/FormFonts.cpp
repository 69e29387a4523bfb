#include "platform/linux/FormFonts.h"

#include <QApplication>
#include <QFontDatabase>

namespace voxtrel {

namespace {

constexpr double kHeadlineScale = 1.2;
constexpr double kCaptionScale = 0.85;

/// `font` at `scale` times the size of the application's font, whichever unit that is in.
QFont sized(QFont font, double scale) {
  const QFont own = QApplication::font();
  if (own.pointSizeF() > 0) {
    font.setPointSizeF(own.pointSizeF() * scale);
  } else {
    font.setPixelSize(qRound(own.pixelSize() * scale));
  }
  return font;
}

QFont weighted(QFont font, QFont::Weight weight) {
  font.setWeight(weight);
  return font;
}

}  // namespace

QFont headlineFont() {
  return weighted(sized(QApplication::font(), kHeadlineScale), QFont::Bold);
}

QFont semiboldFont() {
  return weighted(QApplication::font(), QFont::DemiBold);
}

QFont captionFont() {
  return sized(QApplication::font(), kCaptionScale);
}

QFont monospacedCaptionFont() {
  return sized(QFontDatabase::systemFont(QFontDatabase::FixedFont), kCaptionScale);
}

}  // namespace voxtrel
