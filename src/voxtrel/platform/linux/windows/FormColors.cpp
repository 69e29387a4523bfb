#include "voxtrel/platform/linux/windows/FormColors.h"

#include <algorithm>
#include <cmath>

namespace voxtrel {

namespace {

/// The share of light that a channel between 0 and 1 stands for in sRGB.
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

}  // namespace

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

}  // namespace voxtrel
