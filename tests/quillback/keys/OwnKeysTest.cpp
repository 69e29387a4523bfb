#include <gtest/gtest.h>

#include "quillback/keys/OwnKeys.h"
#include "support/ManualLoop.h"

namespace voxtrel::quillback {
namespace {

using std::chrono::milliseconds;

TEST(OwnKeysTest, EachEventSentIsClaimedOnce) {
  const test::ManualLoop loop;
  OwnKeys keys(loop);
  keys.sent(38, true);
  keys.sent(38, false);
  EXPECT_TRUE(keys.claim(38, true));
  EXPECT_FALSE(keys.claim(38, true)) << "the second press is the user's";
  EXPECT_TRUE(keys.claim(38, false));
  EXPECT_FALSE(keys.claim(38, false));
}

TEST(OwnKeysTest, OtherEventsAreNotClaimed) {
  const test::ManualLoop loop;
  OwnKeys keys(loop);
  keys.sent(38, true);
  EXPECT_FALSE(keys.claim(134, true));
  EXPECT_FALSE(keys.claim(38, false));
  EXPECT_TRUE(keys.claim(38, true));
}

TEST(OwnKeysTest, AnEventThatNeverComesBackIsForgottenAfterHalfASecond) {
  test::ManualLoop loop;
  OwnKeys keys(loop);
  keys.sent(38, true);
  loop.advance(milliseconds(500));
  keys.sent(39, true);
  EXPECT_TRUE(keys.claim(38, true));
  keys.sent(38, true);
  loop.advance(milliseconds(501));
  EXPECT_FALSE(keys.claim(38, true));
}

}  // namespace
}  // namespace voxtrel::quillback
