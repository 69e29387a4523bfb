#include "voxtrel/platform/linux/windows/FormFonts.h"

#include <QFontDatabase>

namespace voxtrel {

namespace {

constexpr double kHeadlineScale = 1.2;
constexpr double kCaptionScale = 0.85;

/// `font` at `scale` times the size of `base`, whichever unit that is in.
QFont sized(QFont font, const QFont& base, double scale) {
  if (base.pointSizeF() > 0) {
    font.setPointSizeF(base.pointSizeF() * scale);
  } else {
    font.setPixelSize(qRound(base.pixelSize() * scale));
  }
  return font;
}

QFont weighted(QFont font, QFont::Weight weight) {
  font.setWeight(weight);
  return font;
}

}  // namespace

QFont headline(const QFont& base) {
  return weighted(sized(base, base, kHeadlineScale), QFont::Bold);
}

QFont semibold(const QFont& base) {
  return weighted(base, QFont::DemiBold);
}

QFont caption(const QFont& base) {
  return sized(base, base, kCaptionScale);
}

QFont monospacedCaption(const QFont& base) {
  return sized(QFontDatabase::systemFont(QFontDatabase::FixedFont), base, kCaptionScale);
}

}  // namespace voxtrel
