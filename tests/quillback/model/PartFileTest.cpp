#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "quillback/model/PartFile.h"
#include "support/ScratchFolder.h"

namespace voxtrel::quillback {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string kHash(64, 'a');

TEST(PartRecordTest, ARecordIsReadAsItWasWritten) {
  const PartRecord record{kHash, "\"v1\"", "Mon, 01 Jan 2024 00:00:00 GMT"};
  EXPECT_EQ(parsePartRecord(formatPartRecord(record)), record);
  EXPECT_EQ(parsePartRecord(formatPartRecord({kHash, "", ""})), (PartRecord{kHash, "", ""}));
}

TEST(PartRecordTest, ARecordThatCouldHarmARequestIsIgnored) {
  const std::vector<std::string> harmful = {"a\r\nHost: evil", "a\nb", std::string(513, 'x'),
                                            "\x7f"};
  for (const std::string& etag : harmful) {
    EXPECT_EQ(parsePartRecord(formatPartRecord({kHash, etag, ""})), std::nullopt);
    EXPECT_EQ(parsePartRecord(formatPartRecord({kHash, "", etag})), std::nullopt);
  }
}

TEST(PartRecordTest, ADamagedRecordIsIgnored) {
  for (const char* text : {"", "{", "[]", "{}", "{\"sha256\": 7}"}) {
    EXPECT_EQ(parsePartRecord(text), std::nullopt) << text;
  }
  EXPECT_EQ(parsePartRecord(formatPartRecord({"abc", "", ""})), std::nullopt);
  EXPECT_EQ(
      parsePartRecord(formatPartRecord({kHash, "", ""}) + std::string(kMaxPartRecordBytes, ' ')),
      std::nullopt);
}

TEST(PartBlocksTest, BlocksAreReadAsTheyWereWritten) {
  const PartBlock first{0, 10, kHash};
  const PartBlock second{15, 16, std::string(64, '0')};
  EXPECT_THAT(parsePartBlocks(formatPartBlock(first) + formatPartBlock(second)),
              ElementsAre(first, second));
}

TEST(PartBlocksTest, ALineThatIsDamagedOrGoesBackEndsThem) {
  const std::string good = formatPartBlock({0, 10, kHash});
  for (const std::string& bad :
       {std::string("x\n"), formatPartBlock({5, 20, kHash}), formatPartBlock({20, 20, kHash}),
        formatPartBlock({20, 30, "abc"}), "10 20" + kHash + "\n", "10 20  " + kHash + "\n",
        "10 20 " + kHash, "-1 20 " + kHash + "\n", "10 99999999999999999999 " + kHash + "\n",
        std::string("\n")}) {
    EXPECT_THAT(parsePartBlocks(good + bad + formatPartBlock({50, 60, kHash})),
                ElementsAre(PartBlock{0, 10, kHash}))
        << bad;
  }
}

struct PartFileTest : testing::Test {
  void SetUp() override { ASSERT_TRUE(part.open()); }

  static FileResult add(PartFile& to, const std::string& text) { return to.append(text); }
  std::string content() const {
    std::ifstream file(scratch.path() / "f.part");
    return {std::istreambuf_iterator<char>(file), {}};
  }
  static std::string hashOf(const std::string& text) {
    Sha256 hash;
    hash.add(text);
    return hash.digest();
  }
  /// What a later setup finds.
  PartFile reopened() const {
    PartFile again(scratch.path().string(), "f");
    EXPECT_TRUE(again.open());
    EXPECT_TRUE(again.verify(stop));
    return again;
  }
  bool hasBlocks() const { return std::filesystem::exists(scratch.path() / "f.part.blocks"); }

  ScratchFolder scratch;
  StopSignals stop{StopSignals::InheritedIgnores::keep, {}};
  PartFile part{scratch.path().string(), "f"};
};

TEST_F(PartFileTest, SealedBytesAreVerified) {
  ASSERT_TRUE(add(part, "first"));
  ASSERT_TRUE(part.sealBlock());
  ASSERT_TRUE(add(part, "second"));
  ASSERT_TRUE(part.sealBlock());
  const PartFile again = reopened();
  EXPECT_EQ(again.verifiedBytes(), 11U);
  EXPECT_EQ(again.sizeBytes(), 11U);
  EXPECT_EQ(again.digest(), hashOf("firstsecond"));
}

TEST_F(PartFileTest, BytesWithoutSealStayOnlyIfTheVersionIsKnown) {
  ASSERT_TRUE(add(part, "first"));
  ASSERT_TRUE(part.sealBlock());
  ASSERT_TRUE(add(part, "second"));
  ASSERT_TRUE(part.writeRecord({kHash, "\"v1\"", ""}));
  EXPECT_EQ(reopened().sizeBytes(), 11U);
  EXPECT_EQ(reopened().verifiedBytes(), 5U);
  ASSERT_TRUE(part.writeRecord({kHash, "", ""}));
  EXPECT_EQ(reopened().sizeBytes(), 5U);
  EXPECT_EQ(content(), "first");
}

TEST_F(PartFileTest, ItIsCutBeforeABlockThatHasChangedOnTheDisk) {
  for (const char* text : {"first", "second", "third"}) {
    ASSERT_TRUE(add(part, text));
    ASSERT_TRUE(part.sealBlock());
  }
  ASSERT_TRUE(part.writeRecord({kHash, "\"v1\"", ""}));
  std::fstream(scratch.path() / "f.part", std::ios::in | std::ios::out).seekp(7).put('X');
  PartFile again = reopened();
  EXPECT_EQ(content(), "first");
  ASSERT_TRUE(add(again, "again"));
  ASSERT_TRUE(again.sealBlock());
  EXPECT_EQ(reopened().verifiedBytes(), 10U);
}

TEST_F(PartFileTest, ALineThatACrashHasCutDoesNotSpoilTheNext) {
  ASSERT_TRUE(add(part, "first"));
  ASSERT_TRUE(part.sealBlock());
  ASSERT_TRUE(part.writeRecord({kHash, "\"v1\"", ""}));
  std::ofstream(scratch.path() / "f.part.blocks", std::ios::app) << "5 9 abc";
  PartFile again = reopened();
  ASSERT_TRUE(add(again, "second"));
  ASSERT_TRUE(again.sealBlock());
  EXPECT_EQ(reopened().verifiedBytes(), 11U);
}

TEST_F(PartFileTest, TheSameBytesAreComparedAndOtherBytesReplaceTheRest) {
  ASSERT_TRUE(add(part, "firstsecond"));
  ASSERT_TRUE(part.sealBlock());
  ASSERT_TRUE(part.rewind(0, stop));
  EXPECT_TRUE(part.fits(std::string_view("firs")).value());
  EXPECT_FALSE(part.fits(std::string_view("fish")).value());
  EXPECT_TRUE(part.fits(std::string_view("firstsecond and more")).value());
  ASSERT_TRUE(add(part, "firs"));
  EXPECT_TRUE(part.isComparing());
  EXPECT_EQ(content(), "firstsecond");
  ASSERT_TRUE(add(part, "tSEC"));
  EXPECT_FALSE(part.isComparing());
  EXPECT_EQ(content(), "firstSEC");
  EXPECT_EQ(part.digest(), hashOf("firstSEC"));
  EXPECT_FALSE(hasBlocks()) << "the block was of other bytes";
}

TEST_F(PartFileTest, TheSameBytesBeforeADifferenceAreVerifiedToo) {
  ASSERT_TRUE(add(part, "firstsecond"));
  ASSERT_TRUE(part.sealBlock());
  ASSERT_TRUE(part.rewind(0, stop));
  ASSERT_TRUE(add(part, "firstSEC"));
  ASSERT_TRUE(part.sealBlock());
  EXPECT_EQ(reopened().verifiedBytes(), 8U);
}

TEST_F(PartFileTest, WhatGoesBeyondTheSameBytesIsAppended) {
  ASSERT_TRUE(add(part, "first"));
  ASSERT_TRUE(part.sealBlock());
  ASSERT_TRUE(part.rewind(0, stop));
  ASSERT_TRUE(add(part, "firstsecond"));
  ASSERT_TRUE(part.sealBlock());
  EXPECT_EQ(content(), "firstsecond");
  EXPECT_EQ(reopened().verifiedBytes(), 11U);
}

TEST_F(PartFileTest, WhatIsHeldIsReadAgainInsteadOfReceived) {
  ASSERT_TRUE(add(part, "firstsecond"));
  ASSERT_TRUE(part.rewind(0, stop));
  ASSERT_TRUE(add(part, "fir"));
  ASSERT_TRUE(part.catchUp(stop));
  EXPECT_EQ(part.sizeBytes(), 11U);
  EXPECT_EQ(part.digest(), hashOf("firstsecond"));
}

TEST_F(PartFileTest, AnEmptiedPartLeavesNothingBeside) {
  ASSERT_TRUE(add(part, "first"));
  ASSERT_TRUE(part.sealBlock());
  ASSERT_TRUE(part.writeRecord({kHash, "", ""}));
  ASSERT_TRUE(part.clear());
  EXPECT_EQ(content(), "");
  EXPECT_FALSE(hasBlocks());
  EXPECT_FALSE(std::filesystem::exists(scratch.path() / "f.part.json"));
  EXPECT_EQ(part.digest(), hashOf(""));
}

}  // namespace
}  // namespace voxtrel::quillback
