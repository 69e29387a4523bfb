#include <gtest/gtest.h>

#include "quillback/model/RangeRules.h"

namespace voxtrel::quillback {
namespace {

using enum ReplyAction;

HttpReply reply(int status, std::optional<std::string> contentRange = {},
                std::optional<std::uint64_t> contentLength = {}) {
  return {status, std::move(contentRange), contentLength, "", ""};
}

constexpr std::uint64_t kTotal = 1000;
const RangeRequest kWhole{0, kTotal, ""};
const RangeRequest kRest{400, kTotal, "\"v1\""};

TEST(RangeRulesTest, AContentRangeWithConsistentNumbersIsParsed) {
  EXPECT_EQ(parseContentRange("bytes 0-0/1"), (ContentRange{0, 0, 1}));
  EXPECT_EQ(parseContentRange("bytes 400-999/1000"), (ContentRange{400, 999, 1000}));
  EXPECT_EQ(parseContentRange("Bytes  400-999/1000"), (ContentRange{400, 999, 1000}));
  EXPECT_EQ(
      parseContentRange("bytes 18446744073709551613-18446744073709551614/18446744073709551615"),
      (ContentRange{UINT64_MAX - 2, UINT64_MAX - 1, UINT64_MAX}));
}

TEST(RangeRulesTest, AnyOtherContentRangeIsRefused) {
  for (const char* text :
       {"", "bytes", "bytes ", "bytes 400-999", "bytes 400-999/", "bytes 400-999/*", "bytes */1000",
        "bytes 400-999/1000x", "bytes 400-999/1000 ", "bytes -400-999/1000", "bytes +400-999/1000",
        "bytes 999-400/1000", "bytes 400-1000/1000", "items 400-999/1000", "bytes=400-999/1000",
        "bytes 0x1-2/3", "bytes 400 - 999/1000", "bytes 0-1/18446744073709551616",
        "bytes 400-999/1000, 0-1/1000"}) {
    EXPECT_EQ(parseContentRange(text), std::nullopt) << text;
  }
}

TEST(RangeRulesTest, AWholeFileIsAppendedToAnEmptyPart) {
  EXPECT_EQ(judgeReply(kWhole, reply(200, {}, 1000)), append);
  EXPECT_EQ(judgeReply(kWhole, reply(200)), append);
}

TEST(RangeRulesTest, AWholeFileInsteadOfTheRestRestarts) {
  EXPECT_EQ(judgeReply(kRest, reply(200, {}, 1000)), restart);
  EXPECT_EQ(judgeReply(kRest, reply(200)), restart);
}

TEST(RangeRulesTest, AnotherLengthMeansAnotherFile) {
  EXPECT_EQ(judgeReply(kWhole, reply(200, {}, 999)), wrongFile);
  EXPECT_EQ(judgeReply(kWhole, reply(200, {}, 1001)), wrongFile);
  EXPECT_EQ(judgeReply(kRest, reply(200, {}, 600)), wrongFile);
}

TEST(RangeRulesTest, OnlyExactlyTheRestIsAppended) {
  EXPECT_EQ(judgeReply(kRest, reply(206, "bytes 400-999/1000", 600)), append);
  EXPECT_EQ(judgeReply(kRest, reply(206, "bytes 400-999/1000")), append);
  for (const char* range :
       {"bytes 399-999/1000", "bytes 401-999/1000", "bytes 0-999/1000", "bytes 400-998/1000",
        "bytes 400-999/1001", "bytes 400-1000/1001", "bytes 400-999/*", "nonsense", ""}) {
    EXPECT_EQ(judgeReply(kRest, reply(206, range)), refetch) << range;
  }
  EXPECT_EQ(judgeReply(kRest, reply(206)), refetch);
  EXPECT_EQ(judgeReply(kRest, reply(206, "bytes 400-999/1000", 599)), refetch);
}

TEST(RangeRulesTest, ARangeThatWasNotRequestedIsNotTrusted) {
  EXPECT_EQ(judgeReply(kWhole, reply(206, "bytes 0-999/1000")), refetch);
}

TEST(RangeRulesTest, TheRestOfAnotherVersionIsNotAppended) {
  HttpReply other = reply(206, "bytes 400-999/1000");
  other.etag = "\"v2\"";
  EXPECT_EQ(judgeReply(kRest, other), refetch);
  other.etag = "\"v1\"";
  EXPECT_EQ(judgeReply(kRest, other), append);
}

TEST(RangeRulesTest, AWebPageIsNotTheFile) {
  for (const char* type : {"text/html", "Text/HTML; charset=utf-8", "text/html;x", "text/html x",
                           "application/xhtml+xml"}) {
    HttpReply page = reply(200, {}, 1000);
    page.contentType = type;
    EXPECT_EQ(judgeReply(kWhole, page), webPage) << type;
    EXPECT_EQ(judgeReply(kRest, page), webPage) << type;
    page = reply(206, "bytes 400-999/1000");
    page.contentType = type;
    EXPECT_EQ(judgeReply(kRest, page), webPage) << type;
    page = reply(503);
    page.contentType = type;
    EXPECT_EQ(judgeReply(kRest, page), retry) << type;
  }
  for (const char* type :
       {"", "text/htm", "text/html5", "application/octet-stream", "text/plain"}) {
    HttpReply file = reply(200, {}, 1000);
    file.contentType = type;
    EXPECT_EQ(judgeReply(kWhole, file), append) << type;
  }
}

TEST(RangeRulesTest, AnUnsatisfiableRangeRestarts) {
  EXPECT_EQ(judgeReply(kRest, reply(416, "bytes */400")), refetch);
  EXPECT_EQ(judgeReply(kWhole, reply(416)), refuse);
}

TEST(RangeRulesTest, OnlyTemporaryErrorsAreRetried) {
  for (const int status : {408, 425, 429, 500, 502, 503, 504}) {
    EXPECT_EQ(judgeReply(kRest, reply(status)), retry) << status;
  }
  for (const int status : {0, 100, 201, 204, 207, 301, 304, 400, 401, 403, 404, 410, 412, 501}) {
    EXPECT_EQ(judgeReply(kRest, reply(status)), refuse) << status;
  }
}

TEST(RangeRulesTest, IfRangeIsAStrongTagOrElseTheTime) {
  EXPECT_EQ(ifRangeOf("\"v1\"", "Mon"), "\"v1\"");
  EXPECT_EQ(ifRangeOf("W/\"v1\"", "Mon"), "Mon");
  EXPECT_EQ(ifRangeOf("v1", "Mon"), "Mon");
  EXPECT_EQ(ifRangeOf("\"", "Mon"), "Mon");
  EXPECT_EQ(ifRangeOf("", ""), "");
}

}  // namespace
}  // namespace voxtrel::quillback
