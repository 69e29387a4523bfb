#include <gtest/gtest.h>

#include "voxtrel/platform/linux/session/DesktopEntryText.h"

namespace voxtrel {
namespace {

struct Row {
  const char* plain;
  const char* written;
};

TEST(DesktopEntryTextTest, quotesACommandIfItsCharactersRequireIt) {
  const Row rows[] = {
      {"/usr/bin/voxtrel", "/usr/bin/voxtrel"},
      {"/opt/My Apps/voxtrel", "\"/opt/My Apps/voxtrel\""},
      {"/a\"b", R"("/a\\"b")"},
      {"/a`b", R"("/a\\`b")"},
      {"/a$b", R"("/a\\$b")"},
      {"/a\\b", R"("/a\\\\b")"},
      {"/100%", "/100%%"},
      {"/100 %", "\"/100 %%\""},
      {"/a'b", "\"/a'b\""},
      {"/a;b", "\"/a;b\""},
      {"/a&b", "\"/a&b\""},
      {"/a(b)", "\"/a(b)\""},
      {"/a~b#c", "\"/a~b#c\""},
      {"/a\nb", R"("/a\nb")"},
      {"/a\tb", R"("/a\tb")"},
      {"/größe", "/größe"},
      {"", "\"\""},
  };
  for (const Row& row : rows) EXPECT_EQ(desktopEntryCommand(row.plain), row.written) << row.plain;
}

TEST(DesktopEntryTextTest, escapesAStringButNeverQuotesIt) {
  const Row rows[] = {
      {"/usr/bin/voxtrel", "/usr/bin/voxtrel"},
      {"/opt/My Apps/voxtrel", "/opt/My Apps/voxtrel"},
      {"/a\\b", R"(/a\\b)"},
      {"/a\nb\tc\rd", R"(/a\nb\tc\rd)"},
      {"  two", R"(\s\stwo)"},
      {"s s", "s s"},
      {"/100%\"$`", "/100%\"$`"},
  };
  for (const Row& row : rows) EXPECT_EQ(desktopEntryString(row.plain), row.written) << row.plain;
}

TEST(DesktopEntryTextTest, readsBackEveryStringItWrites) {
  for (const char* text : {"", " ", "  a ", "\\", "\\n", "\n", "\t\r", "s", "\\\\s", "ü %"}) {
    EXPECT_EQ(desktopEntryValue(desktopEntryString(text)), text);
  }
}

TEST(DesktopEntryTextTest, aBackslashAtTheEndOfAValueStaysOne) {
  EXPECT_EQ(desktopEntryValue("a\\"), "a\\");
}

TEST(DesktopEntryTextTest, readsOnlyTheKeysOfTheGroupDesktopEntry) {
  const auto entry = readDesktopEntry(
      "Type=Before\n# Type=Comment\n[Desktop Entry]\r\nType = Application \r\nName[de]=x\n"
      "no equals sign\n\n[Desktop Action a]\nType=Action\nHidden=true\n");
  EXPECT_EQ(entry,
            (std::map<std::string, std::string>{{"Type", "Application"}, {"Name[de]", "x"}}));
}

TEST(DesktopEntryTextTest, readsALastLineWithoutNewline) {
  EXPECT_EQ(readDesktopEntry("[Desktop Entry]\nHidden=true").at("Hidden"), "true");
}

TEST(DesktopEntryTextTest, readsNothingFromOtherFiles) {
  EXPECT_TRUE(readDesktopEntry("").empty());
  EXPECT_TRUE(readDesktopEntry("\n\n===\n[").empty());
  EXPECT_TRUE(readDesktopEntry(std::string_view("\0\xff=\0", 4)).empty());
}

}  // namespace
}  // namespace voxtrel
