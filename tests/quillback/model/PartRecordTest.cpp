#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "quillback/model/PartRecord.h"
#include "quillback/model/Sha256.h"

namespace voxtrel::quillback {
namespace {

const std::string kHash(64, 'a');

TEST(PartRecordText, IsReadAsItWasWritten) {
  const PartRecord record{kHash, "\"v1\"", "Mon, 01 Jan 2024 00:00:00 GMT"};
  EXPECT_EQ(parsePartRecord(formatPartRecord(record)), record);
  EXPECT_EQ(parsePartRecord(formatPartRecord({kHash, "", ""})), (PartRecord{kHash, "", ""}));
}

TEST(PartRecordText, IsIgnoredWhenItCouldHarmARequest) {
  const std::vector<std::string> harmful = {"a\r\nHost: evil", "a\nb", std::string(513, 'x'),
                                            "\x7f"};
  for (const std::string& etag : harmful) {
    EXPECT_EQ(parsePartRecord(formatPartRecord({kHash, etag, ""})), std::nullopt);
    EXPECT_EQ(parsePartRecord(formatPartRecord({kHash, "", etag})), std::nullopt);
  }
}

TEST(PartRecordText, IsIgnoredWhenItIsDamaged) {
  for (const char* text : {"", "{", "[]", "{}", "{\"sha256\": 7}"}) {
    EXPECT_EQ(parsePartRecord(text), std::nullopt) << text;
  }
  EXPECT_EQ(parsePartRecord(formatPartRecord({"abc", "", ""})), std::nullopt);
  EXPECT_EQ(
      parsePartRecord(formatPartRecord({kHash, "", ""}) + std::string(kMaxPartRecordBytes, ' ')),
      std::nullopt);
}

TEST(Hash, IsTheOneOfAllBytesWhateverTheirPieces) {
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

}  // namespace
}  // namespace voxtrel::quillback
