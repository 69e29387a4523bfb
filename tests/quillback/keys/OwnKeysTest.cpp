#include <gtest/gtest.h>

#include "quillback/keys/OwnKeys.h"
#include "support/ManualLoop.h"

namespace voxtrel::quillback {
namespace {

using std::chrono::milliseconds;

TEST(OwnKeysTest, EachEventSentIsTakenOnce) {
  const test::ManualLoop loop;
  OwnKeys keys(loop);
  keys.sent(38, true);
  keys.sent(38, false);
  EXPECT_TRUE(keys.take(38, true));
  EXPECT_FALSE(keys.take(38, true)) << "the second press is the user's";
  EXPECT_TRUE(keys.take(38, false));
  EXPECT_FALSE(keys.take(38, false));
}

TEST(OwnKeysTest, AnotherKeyIsTheUsers) {
  const test::ManualLoop loop;
  OwnKeys keys(loop);
  keys.sent(38, true);
  EXPECT_FALSE(keys.take(134, true));
  EXPECT_FALSE(keys.take(38, false));
  EXPECT_TRUE(keys.take(38, true));
}

TEST(OwnKeysTest, AnEventThatNeverCameIsForgottenAfterHalfASecond) {
  test::ManualLoop loop;
  OwnKeys keys(loop);
  keys.sent(38, true);
  loop.advance(milliseconds(500));
  keys.sent(39, true);
  EXPECT_TRUE(keys.take(38, true));
  keys.sent(38, true);
  loop.advance(milliseconds(501));
  EXPECT_FALSE(keys.take(38, true));
}

}  // namespace
}  // namespace voxtrel::quillback
