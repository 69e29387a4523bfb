#include <gtest/gtest.h>

#include "voxtrel/platform/linux/tray/MenuText.h"

namespace voxtrel {
namespace {

/// What a tray host shows of a label: `__` is an underscore, any other `_` is not shown.
QString shownByHost(const QString& label) {
  QString shown;
  for (qsizetype i = 0; i < label.size(); ++i) {
    if (label[i] != u'_') {
      shown += label[i];
    } else if (i + 1 < label.size() && label[i + 1] == u'_') {
      shown += u'_';
      ++i;
    }
  }
  return shown;
}

std::string readAtHost(std::string_view title) {
  return shownByHost(trayHostLabel(title)).toStdString();
}

TEST(MenuText, aTrayHostShowsEveryShortTitleOfAmpersandsAndUnderscoresAsItIs) {
  constexpr std::string_view kAlphabet = "a&_";
  constexpr std::size_t kLongest = 7;
  std::vector<std::string> titles = {""};
  for (std::size_t length = 0; length < kLongest; ++length) {
    std::vector<std::string> longer;
    for (const std::string& title : titles) {
      EXPECT_EQ(readAtHost(title), title);
      for (const char character : kAlphabet) longer.push_back(title + character);
    }
    titles = std::move(longer);
  }
}

TEST(MenuText, aTrayHostIsGivenNoAccessKey) {
  EXPECT_EQ(trayHostLabel("R&D a_b _ & __x"), "R&D a__b __ & ____x");
}

TEST(MenuText, keepsTextOutsideAscii) {
  EXPECT_EQ(readAtHost("Ready — hold Right Cmd"), "Ready — hold Right Cmd");
}

TEST(MenuText, aMenuOfQtsOwnShowsAmpersandsThatAreDoubled) {
  EXPECT_EQ(widgetText("R&D_1 &&"), "R&&D_1 &&&&");
}

}  // namespace
}  // namespace voxtrel
