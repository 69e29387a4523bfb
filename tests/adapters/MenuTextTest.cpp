#include <gtest/gtest.h>

#include "platform/linux/MenuText.h"

namespace voxtrel {
namespace {

/// What Qt makes of an action's text on its way to a tray host.
QString sentByQt(QString text) {
  const auto ampersand = text.indexOf(u'&');
  if (ampersand >= 0 && ampersand != text.size() - 1) text[ampersand] = u'_';
  return text;
}

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
  return shownByHost(sentByQt(menuText(title, MenuRenderer::trayHost))).toStdString();
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

TEST(MenuText, aTitleWithoutAmpersandGivesATrayHostNoAccessKey) {
  EXPECT_EQ(sentByQt(menuText("snake_case _x", MenuRenderer::trayHost)), "snake__case __x");
}

TEST(MenuText, anUnderscoreBeforeTheFirstAmpersandSparesTheAccessKey) {
  EXPECT_EQ(sentByQt(menuText("a_b & c", MenuRenderer::trayHost)), "a__b & c");
}

TEST(MenuText, keepsTextOutsideAscii) {
  EXPECT_EQ(readAtHost("Ready — hold Right Cmd"), "Ready — hold Right Cmd");
}

TEST(MenuText, aMenuOfQtsOwnShowsAmpersandsThatAreDoubled) {
  EXPECT_EQ(menuText("R&D_1 &&", MenuRenderer::widget), "R&&D_1 &&&&");
}

}  // namespace
}  // namespace voxtrel
