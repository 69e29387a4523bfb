#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "quillback/model/Files.h"
#include "support/ScratchFolder.h"

namespace voxtrel::quillback {
namespace {

TEST(FilesTest, TheHashDoesNotDependOnThePieces) {
  Sha256 hash;
  EXPECT_EQ(hash.digest(), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
  hash.add(std::string("a"));
  hash.add(std::string("bc"));
  const std::string abc = "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";
  EXPECT_EQ(hash.digest(), abc);
  EXPECT_EQ(hash.digest(), abc);
  hash.reset();
  hash.add(std::string("abc"));
  EXPECT_EQ(hash.digest(), abc);
}

TEST(FilesTest, AFileIsReplacedAtomically) {
  const ScratchFolder scratch;
  const std::string folder = scratch.path();
  EXPECT_TRUE(replaceFile(folder, "x", "old"));
  EXPECT_TRUE(replaceFile(folder, "x", "new"));
  EXPECT_EQ(readSmallFile(folder + "/x", 100), "new");
  EXPECT_FALSE(std::filesystem::exists(folder + "/x.tmp"));
  EXPECT_FALSE(replaceFile(folder + "/none", "x", "new"));
}

}  // namespace
}  // namespace voxtrel::quillback
