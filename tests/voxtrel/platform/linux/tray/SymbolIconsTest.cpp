#include <gtest/gtest.h>

#include <QFile>
#include <array>

#include "voxtrel/platform/linux/tray/SymbolIcons.h"

namespace voxtrel {
namespace {

constexpr std::array<std::string_view, 5> kSymbols = {"mic", "mic.fill", "mic.badge.xmark",
                                                      "mic.slash", "waveform"};

QString compiledIn(std::string_view symbol) {
  return ":/icons/" + *themedIconName(symbol) + ".svg";
}

TEST(SymbolIcons, areNamedAfterTheirSymbols) {
  EXPECT_EQ(themedIconName("mic"), "voxtrel-mic-symbolic");
  EXPECT_EQ(themedIconName("mic.badge.xmark"), "voxtrel-mic-badge-xmark-symbolic");
}

TEST(SymbolIcons, doNotExistForOtherSymbols) {
  EXPECT_FALSE(themedIconName("mic.badge"));
  EXPECT_FALSE(themedIconName(""));
}

TEST(SymbolIcons, areCompiledInForEverySymbol) {
  for (const std::string_view symbol : kSymbols) {
    EXPECT_TRUE(QFile::exists(compiledIn(symbol))) << symbol;
  }
}

// A host that does not recolour them, such as waybar, may have a dark panel.
TEST(SymbolIcons, haveTheToneOfTheirPicturesInTheirFiles) {
  for (const std::string_view symbol : kSymbols) {
    QFile file(compiledIn(symbol));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << symbol;
    const QByteArray drawing = file.readAll();
    EXPECT_GT(drawing.count("fill=\"#3584e4\""), 0) << symbol;
    EXPECT_EQ(drawing.count("fill=\"#"), drawing.count("fill=\"#3584e4\"")) << symbol;
  }
}

}  // namespace
}  // namespace voxtrel
