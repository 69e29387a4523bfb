#include <gtest/gtest.h>

#include "voxtrel/platform/linux/x11/XTheme.h"

namespace voxtrel {
namespace {

/// Little-endian settings: a number, a colour and two texts.
QByteArray published() {
  return QByteArray::fromHex(
      "00000000"
      "07000000"
      "04000000"
      "00000300"
      "4E2F4100"
      "01000000"
      "05000000"
      "02000400"
      "4E2F4243"
      "01000000"
      "0102030405060708"
      "01000D00"
      "4E65742F5468656D654E616D65000000"
      "01000000"
      "0C000000"
      "416477616974612D6461726B"
      "01000500"
      "4E2F4C6173740000"
      "01000000"
      "00000000");
}

TEST(XSettings, findATextAmongOtherSettings) {
  EXPECT_EQ(xSettingsText(published(), "Net/ThemeName"), "Adwaita-dark");
  EXPECT_EQ(xSettingsText(published(), "N/Las"), "");
}

TEST(XSettings, returnOnlyTexts) {
  EXPECT_EQ(xSettingsText(published(), "N/A"), std::nullopt);
  EXPECT_EQ(xSettingsText(published(), "Net/IconThemeName"), std::nullopt);
}

TEST(XSettings, areReadInBigEndianToo) {
  const QByteArray data = QByteArray::fromHex(
      "01000000"
      "00000007"
      "00000001"
      "01000003"
      "4E2F4100"
      "00000001"
      "00000002"
      "686F0000");
  EXPECT_EQ(xSettingsText(data, "N/A"), "ho");
}

TEST(XSettings, areNotReadBeyondTheirEnd) {
  const QByteArray whole = published();
  const qsizetype textsEnd = whole.indexOf("Adwaita-dark") + 12;
  for (qsizetype length = 0; length < whole.size(); ++length) {
    const QByteArray cut(whole.constData(), length);
    EXPECT_EQ(xSettingsText(cut, "Net/ThemeName").has_value(), length >= textsEnd) << length;
  }
  QByteArray longText = whole;
  longText.replace(QByteArray::fromHex("0C000000416477"), QByteArray::fromHex("FFFFFFFF416477"));
  EXPECT_EQ(xSettingsText(longText, "Net/ThemeName"), std::nullopt);
}

}  // namespace
}  // namespace voxtrel
