#include <gtest/gtest.h>

#include "voxtrel/platform/linux/windows/DesktopColors.h"
#include "voxtrel/platform/linux/windows/FormStyle.h"

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

TEST(ControlText, escapesAnAmpersand) {
  EXPECT_EQ(controlText("Save & Restart"), "Save && Restart");
}

TEST(ControlText, marksTheAccessKey) {
  EXPECT_EQ(controlText("Save & Restart", 'R'), "Save && &Restart");
  EXPECT_EQ(controlText("Input Language:", 'I'), "&Input Language:");
}

TEST(ControlText, marksOnlyTheFirstOfEqualLetters) {
  EXPECT_EQ(controlText("Retry Retry", 'R'), "&Retry Retry");
}

TEST(ControlText, ignoresAKeyThatTheTextDoesNotHave) {
  EXPECT_EQ(controlText("Quit", 'X'), "Quit");
}

}  // namespace
}  // namespace voxtrel
