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

}  // namespace
}  // namespace voxtrel
