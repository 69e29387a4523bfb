#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <ostream>
#include <string>

#include "common/settings/TextFile.h"
#include "support/ScratchFolder.h"

namespace voxtrel {
namespace {

struct TextFileTest : testing::Test {
  std::string reasonFor(const std::string& path, std::size_t maxBytes = 1'000) const {
    const auto text = readTextFile(path, maxBytes);
    return text ? "none: " + *text : text.error().reason;
  }
  std::string at(const char* path) const { return (folder.path() / path).string(); }

  ScratchFolder folder{};
};

TEST_F(TextFileTest, IsReadWhole) {
  std::string text = "caf\xC3\xA9 ";
  while (text.size() < 100'000) text += text;
  EXPECT_EQ(readTextFile(folder.write("long", text).string()), text);
  EXPECT_EQ(readTextFile(folder.write("empty", "").string()), "");
  const std::string nul("a\0b", 3);
  EXPECT_EQ(readTextFile(folder.write("nul", nul).string()), nul);
}

TEST_F(TextFileTest, IsMissingWhereNothingIsOrAFileStandsInItsFoldersPlace) {
  folder.write("file", "");
  for (const char* path : {"none", "none/none", "file/none"}) {
    const auto text = readTextFile(at(path));
    ASSERT_FALSE(text) << path;
    EXPECT_TRUE(text.error().isMissing) << path;
  }
  const auto text = readTextFile(folder.path().string());
  ASSERT_FALSE(text);
  EXPECT_FALSE(text.error().isMissing);
}

TEST_F(TextFileTest, SaysWhyItCannotBeRead) {
  EXPECT_EQ(reasonFor(folder.path().string()), "it is not a regular file");
  EXPECT_EQ(reasonFor("/dev/null"), "it is not a regular file");
  ASSERT_EQ(::mkfifo(at("fifo").c_str(), 0600), 0);
  EXPECT_EQ(reasonFor(at("fifo")), "it is not a regular file");
  std::filesystem::create_symlink("itself", at("itself"));
  EXPECT_EQ(reasonFor(at("itself")), "it cannot be read (Too many levels of symbolic links)");
  // A regular file that opens and then fails at its first byte, for every user.
  EXPECT_EQ(reasonFor("/proc/self/mem"), "it cannot be read (Input/output error)");
  EXPECT_EQ(reasonFor(folder.write("latin", "caf\xE9").string()), "it is not UTF-8 text");
}

TEST_F(TextFileTest, MayBeAsLongAsTheLimit) {
  const std::string path = folder.write("long", std::string(5'000, 'x')).string();
  EXPECT_EQ(readTextFile(path, 5'000), std::string(5'000, 'x'));
  EXPECT_EQ(reasonFor(path, 4'999), "it is too long to be settings");
}

}  // namespace
}  // namespace voxtrel
