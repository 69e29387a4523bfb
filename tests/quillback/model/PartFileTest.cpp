#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "quillback/model/PartFile.h"

namespace voxtrel::quillback {
namespace {

const std::string kHash(64, 'a');

TEST(PartFileTest, ARecordIsReadAsItWasWritten) {
  const PartRecord record{kHash, "\"v1\"", "Mon, 01 Jan 2024 00:00:00 GMT"};
  EXPECT_EQ(parsePartRecord(formatPartRecord(record)), record);
  EXPECT_EQ(parsePartRecord(formatPartRecord({kHash, "", ""})), (PartRecord{kHash, "", ""}));
}

TEST(PartFileTest, ARecordThatCouldHarmARequestIsIgnored) {
  const std::vector<std::string> harmful = {"a\r\nHost: evil", "a\nb", std::string(513, 'x'),
                                            "\x7f"};
  for (const std::string& etag : harmful) {
    EXPECT_EQ(parsePartRecord(formatPartRecord({kHash, etag, ""})), std::nullopt);
    EXPECT_EQ(parsePartRecord(formatPartRecord({kHash, "", etag})), std::nullopt);
  }
}

TEST(PartFileTest, ADamagedRecordIsIgnored) {
  for (const char* text : {"", "{", "[]", "{}", "{\"sha256\": 7}"}) {
    EXPECT_EQ(parsePartRecord(text), std::nullopt) << text;
  }
  EXPECT_EQ(parsePartRecord(formatPartRecord({"abc", "", ""})), std::nullopt);
  EXPECT_EQ(
      parsePartRecord(formatPartRecord({kHash, "", ""}) + std::string(kMaxPartRecordBytes, ' ')),
      std::nullopt);
}

}  // namespace
}  // namespace voxtrel::quillback
