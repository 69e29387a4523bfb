#include <gtest/gtest.h>

#include "support/macos/Growth.h"
#import "voxtrel/platform/macos/foundation/Strings.h"

namespace voxtrel {
namespace {

TEST(StringsTest, everyLanguageSurvivesTheWayThereAndBack) {
  for (const std::string text :
       {"", "a", "Ready \u2014 hold Right Cmd", "\u00e9\u8a9e\U0001f3a4"}) {
    EXPECT_EQ(toString(toNSString(text)), text);
  }
}

TEST(StringsTest, aZeroByteDoesNotEndTheText) {
  EXPECT_EQ(toNSString(std::string_view("a\0b", 3)).length, 3U);
}

TEST(StringsTest, bytesThatAreNoTextBecomeReplacementCharacters) {
  EXPECT_EQ(toString(toNSString("a\xff"
                                "b\xc3")),
            "a\uFFFDb\uFFFD");
  EXPECT_EQ(toString(toNSString("\xe2\x82")), "\uFFFD\uFFFD");
}

TEST(StringsTest, nilIsAnEmptyText) {
  EXPECT_EQ(toString(nil), "");
}

TEST(StringsTest, anErrorAlwaysHasADescription) {
  EXPECT_EQ(describe(nil), "unknown error");
  EXPECT_FALSE(describe([NSError errorWithDomain:@"Example" code:7 userInfo:nil]).empty());
  NSDictionary* words = @{NSLocalizedDescriptionKey : @"No device"};
  EXPECT_EQ(describe([NSError errorWithDomain:@"Example" code:7 userInfo:words]), "No device");
}

TEST(StringsTest, aThousandRoundsKeepNothing) {
  expectNoGrowth([] {
    EXPECT_EQ(toString(toNSString("Ready \u2014 hold Right Cmd")).size(), 24U);
    EXPECT_EQ(toNSString("a\xff").length, 2U);
  });
}

}  // namespace
}  // namespace voxtrel
