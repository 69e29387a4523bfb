#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "quillback/keys/PushToTalk.h"

namespace voxtrel::quillback {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr int kKey = 134;
constexpr int kEscape = 9;
constexpr int kLeftShift = 50;
constexpr int kRightShift = 62;
constexpr int kOther = 38;

class PushToTalkTest : public ::testing::Test {
 protected:
  static PushToTalk::Codes codes(bool needsShift) {
    return {kKey, kEscape, kLeftShift, kRightShift, needsShift};
  }
  PushToTalk make(bool needsShift = false) {
    return {codes(needsShift),
            {.onPressed = [this] { events_.emplace_back("pressed"); },
             .onReleased = [this] { events_.emplace_back("released"); },
             .onCancelled = [this] { events_.emplace_back("cancelled"); }}};
  }

  std::vector<std::string> events_;
};

TEST_F(PushToTalkTest, APressAndAReleaseAreReportedOnceEach) {
  PushToTalk key = make();
  key.down(1, kKey);
  EXPECT_THAT(events_, ElementsAre("pressed"));
  EXPECT_TRUE(key.isHeld());
  key.up(1, kKey);
  EXPECT_THAT(events_, ElementsAre("pressed", "released"));
  EXPECT_FALSE(key.isHeld());
}

TEST_F(PushToTalkTest, RepeatsOfAHeldKeyAreIgnored) {
  PushToTalk key = make();
  for (int i = 0; i < 5; ++i) key.down(1, kKey);
  key.up(1, kKey);
  EXPECT_THAT(events_, ElementsAre("pressed", "released"));
}

TEST_F(PushToTalkTest, AReleaseWithoutAPressIsIgnored) {
  PushToTalk key = make();
  key.up(1, kKey);
  EXPECT_THAT(events_, IsEmpty());
}

TEST_F(PushToTalkTest, OtherKeysChangeNothingWhileTheKeyIsHeld) {
  PushToTalk key = make();
  key.down(1, kKey);
  key.down(1, kOther);
  key.up(1, kOther);
  key.down(1, kLeftShift);
  EXPECT_THAT(events_, ElementsAre("pressed"));
}

TEST_F(PushToTalkTest, EscapeCancelsOnceAndTheReleaseStillFollows) {
  PushToTalk key = make();
  key.down(1, kKey);
  key.down(1, kEscape);
  key.down(1, kEscape);
  key.up(1, kEscape);
  key.down(2, kEscape);
  key.up(1, kKey);
  EXPECT_THAT(events_, ElementsAre("pressed", "cancelled", "released"));
}

TEST_F(PushToTalkTest, EscapeCancelsTheNextPressToo) {
  PushToTalk key = make();
  for (int i = 0; i < 2; ++i) {
    key.down(1, kKey);
    key.down(1, kEscape);
    key.up(1, kKey);
  }
  EXPECT_THAT(events_,
              ElementsAre("pressed", "cancelled", "released", "pressed", "cancelled", "released"));
}

TEST_F(PushToTalkTest, EscapeIsIgnoredWhileTheKeyIsUp) {
  PushToTalk key = make();
  key.down(1, kEscape);
  key.up(1, kEscape);
  EXPECT_THAT(events_, IsEmpty());
}

TEST_F(PushToTalkTest, TheKeyHeldOnTwoKeyboardsCountsOnce) {
  PushToTalk key = make();
  key.down(1, kKey);
  key.down(2, kKey);
  key.up(1, kKey);
  EXPECT_THAT(events_, ElementsAre("pressed"));
  key.up(2, kKey);
  EXPECT_THAT(events_, ElementsAre("pressed", "released"));
}

TEST_F(PushToTalkTest, AKeyboardThatGoesAwayReleasesItsKeys) {
  PushToTalk key = make();
  key.down(1, kKey);
  key.down(2, kKey);
  key.gone(1);
  EXPECT_THAT(events_, ElementsAre("pressed"));
  key.gone(2);
  EXPECT_THAT(events_, ElementsAre("pressed", "released"));
  key.up(2, kKey);
  key.gone(2);
  EXPECT_THAT(events_, ElementsAre("pressed", "released"));
}

TEST_F(PushToTalkTest, AllKeyboardsGoneIsOneRelease) {
  PushToTalk key = make();
  key.down(1, kKey);
  key.down(2, kKey);
  key.allGone();
  key.allGone();
  EXPECT_THAT(events_, ElementsAre("pressed", "released"));
}

TEST_F(PushToTalkTest, AKeyThatNeedsShiftCountsOnlyWithEitherShiftDown) {
  PushToTalk key = make(true);
  key.down(1, kKey);
  key.up(1, kKey);
  EXPECT_THAT(events_, IsEmpty());
  for (const int shift : {kLeftShift, kRightShift}) {
    events_.clear();
    key.down(1, shift);
    key.down(1, kKey);
    key.up(1, shift);
    EXPECT_THAT(events_, ElementsAre("pressed")) << "releasing Shift first ended it";
    key.up(1, kKey);
    EXPECT_THAT(events_, ElementsAre("pressed", "released"));
  }
  events_.clear();
  key.down(1, kKey);
  EXPECT_THAT(events_, IsEmpty()) << "Shift is up again";
}

TEST_F(PushToTalkTest, ShiftOnOneKeyboardCountsForAnotherUntilItGoesAway) {
  PushToTalk key = make(true);
  key.down(1, kLeftShift);
  key.gone(1);
  key.down(2, kKey);
  EXPECT_THAT(events_, IsEmpty());
  key.up(2, kKey);
  key.down(1, kLeftShift);
  key.down(2, kKey);
  EXPECT_THAT(events_, ElementsAre("pressed"));
}

TEST_F(PushToTalkTest, ANewKeymapWithTheKeyElsewhereReleasesIt) {
  PushToTalk key = make();
  key.down(1, kKey);
  key.setCodes(codes(false));
  EXPECT_THAT(events_, ElementsAre("pressed"));
  PushToTalk::Codes moved = codes(false);
  moved.hotkey = kOther;
  key.setCodes(moved);
  EXPECT_THAT(events_, ElementsAre("pressed", "released"));
  key.down(1, kKey);
  EXPECT_THAT(events_, ElementsAre("pressed", "released"));
  key.down(1, kOther);
  EXPECT_THAT(events_, ElementsAre("pressed", "released", "pressed"));
}

TEST_F(PushToTalkTest, AHotkeyWithoutACodeIsNeverPressed) {
  PushToTalk key({}, {.onPressed = [this] { events_.emplace_back("pressed"); },
                      .onReleased = [] {},
                      .onCancelled = [] {}});
  key.down(1, PushToTalk::Codes::kNone);
  EXPECT_THAT(events_, IsEmpty());
}

}  // namespace
}  // namespace voxtrel::quillback
