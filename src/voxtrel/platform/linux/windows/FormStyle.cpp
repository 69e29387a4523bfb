#include "voxtrel/platform/linux/windows/FormStyle.h"

#include <QFontDatabase>
#include <QPushButton>
#include <algorithm>
#include <cmath>

namespace voxtrel {
namespace {

constexpr double kHeadlineScale = 1.2;
constexpr double kCaptionScale = 0.85;

/// `font` at `scale` times the size of `base`, which is in points or in pixels.
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

/// Linear light of an sRGB channel, both from 0 to 1.
double linear(double channel) {
  return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

double luminance(const QColor& color) {
  return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
         0.0722 * linear(color.blueF());
}

QColor mixed(const QColor& one, const QColor& other, float shareOfOther) {
  const auto mix = [&](float a, float b) { return a + (b - a) * shareOfOther; };
  return QColor::fromRgbF(mix(one.redF(), other.redF()), mix(one.greenF(), other.greenF()),
                          mix(one.blueF(), other.blueF()));
}

class LargeButton final : public QPushButton {
 public:
  using QPushButton::QPushButton;

  QSize sizeHint() const override {
    const int margin = fontMetrics().height() / 2;
    return QPushButton::sizeHint() + QSize(2 * margin, margin / 2);
  }
  QSize minimumSizeHint() const override { return sizeHint(); }
};

}  // namespace

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

double contrast(const QColor& one, const QColor& other) {
  const double first = luminance(one);
  const double second = luminance(other);
  return (std::max(first, second) + 0.05) / (std::min(first, second) + 0.05);
}

QColor readable(const QColor& color, const QPalette& palette) {
  constexpr int kSteps = 20;
  const QColor window = palette.color(QPalette::Active, QPalette::Window);
  const QColor text = palette.color(QPalette::Active, QPalette::WindowText);
  for (int step = 0; step < kSteps; ++step) {
    const QColor candidate = mixed(color, text, static_cast<float>(step) / kSteps);
    if (contrast(candidate, window) >= kReadableContrast) return candidate;
  }
  return text;
}

QColor secondaryColor(const QPalette& palette) {
  constexpr float kShareOfWindow = 0.4F;
  return readable(mixed(palette.color(QPalette::Active, QPalette::WindowText),
                        palette.color(QPalette::Active, QPalette::Window), kShareOfWindow),
                  palette);
}

QColor errorColor(const QPalette& palette) {
  return readable(QColor(0xE0, 0x1B, 0x24), palette);
}

QColor hintColor(const QPalette& palette) {
  return readable(QColor(0xE6, 0x61, 0x00), palette);
}

QPalette withTextColor(QPalette palette, const QColor& color) {
  palette.setColor(QPalette::WindowText, color);
  return palette;
}

QPushButton* makeLargeButton(const QString& text, QWidget* parent) {
  return new LargeButton(text, parent);
}

}  // namespace voxtrel
