#include <gtest/gtest.h>

#include "voxtrel/platform/linux/windows/DarkPalette.h"
#include "voxtrel/platform/linux/windows/FormColors.h"

namespace voxtrel {
namespace {

QPalette lightPalette() {
  return QPalette(Qt::black, QColor(0xEF, 0xEF, 0xEF), Qt::white, Qt::darkGray, Qt::gray, Qt::black,
                  Qt::white, Qt::white, QColor(0xEF, 0xEF, 0xEF));
}

TEST(FormColors, measureContrastFromOneToTwentyOne) {
  EXPECT_NEAR(contrast(Qt::black, Qt::white), 21.0, 0.01);
  EXPECT_NEAR(contrast(Qt::red, Qt::red), 1.0, 0.01);
  EXPECT_NEAR(contrast(QColor(0x77, 0x77, 0x77), Qt::white), 4.48, 0.01);
}

TEST(FormColors, areReadableOnLightAndDarkWindows) {
  for (const QPalette& palette : {lightPalette(), darkPalette()}) {
    const QColor window = palette.color(QPalette::Window);
    for (const QColor& color : {secondaryColor(palette), errorColor(palette), hintColor(palette)}) {
      EXPECT_GE(contrast(color, window), kReadableContrast) << color.name().toStdString();
      EXPECT_NE(color, palette.color(QPalette::WindowText));
    }
  }
}

TEST(FormColors, stayRedAndOrange) {
  for (const QPalette& palette : {lightPalette(), darkPalette()}) {
    const int red = errorColor(palette).hsvHue();
    EXPECT_TRUE(red <= 10 || red >= 345) << red;
    const int orange = hintColor(palette).hsvHue();
    EXPECT_TRUE(orange >= 18 && orange <= 40) << orange;
  }
}

TEST(FormColors, fallBackToTheTextColour) {
  const QPalette same(Qt::gray, Qt::gray, Qt::gray, Qt::gray, Qt::gray, Qt::gray, Qt::gray,
                      Qt::gray, Qt::gray);
  EXPECT_EQ(errorColor(same), QColor(Qt::gray));
}

TEST(FormColors, makeEveryTextOfTheDarkWindowsReadable) {
  const QPalette dark = darkPalette();
  using Pair = std::pair<QPalette::ColorRole, QPalette::ColorRole>;
  for (const auto& [text, background] :
       {Pair{QPalette::WindowText, QPalette::Window}, Pair{QPalette::Text, QPalette::Base},
        Pair{QPalette::ButtonText, QPalette::Button},
        Pair{QPalette::HighlightedText, QPalette::Highlight},
        Pair{QPalette::PlaceholderText, QPalette::Base}}) {
    EXPECT_GE(contrast(dark.color(text), dark.color(background)), kReadableContrast) << text;
  }
}

}  // namespace
}  // namespace voxtrel
