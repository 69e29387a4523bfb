#include <sys/resource.h>

#include "support/X11Fixture.h"

namespace voxtrel::quillback {
namespace {

using test::run;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class XInput2KeyWatchTest : public X11Fixture {};

TEST_F(XInput2KeyWatchTest, EachHotkeyIsItsPhysicalKeyInEveryLayout) {
  const std::vector<std::pair<std::string, int>> keys = {
      {"right_cmd", 134}, {"right_shift", 62}, {"right_ctrl", 105}, {"right_opt", 108},
      {"f5", 71},         {"f6", 72},          {"f7", 73},          {"f8", 74}};
  for (const std::string layout : {"us", "de", "fr"}) {
    run("setxkbmap " + layout);
    for (const auto& [name, code] : keys) {
      events_.clear();
      const auto watch = watchKey(name);
      ASSERT_TRUE(watch) << watch.error();
      run("xdotool keydown " + std::to_string(code));
      runFor(kSettle);
      EXPECT_THAT(events_, ElementsAre("pressed")) << name << " in " << layout;
      run("xdotool keyup " + std::to_string(code));
      runFor(kSettle);
      EXPECT_THAT(events_, ElementsAre("pressed", "released")) << name << " in " << layout;
    }
  }
}

TEST_F(XInput2KeyWatchTest, TheBackslashKeyCountsOnlyWithShift) {
  const auto watch = watchKey("shift+\\");
  ASSERT_TRUE(watch) << watch.error();
  run("xdotool key 51");
  runFor(kSettle);
  EXPECT_THAT(events_, IsEmpty());
  run("xdotool keydown 50 keydown 51 keyup 50");
  runFor(kSettle);
  EXPECT_THAT(events_, ElementsAre("pressed"));
  run("xdotool keyup 51");
  runFor(kSettle);
  EXPECT_THAT(events_, ElementsAre("pressed", "released"));
}

TEST_F(XInput2KeyWatchTest, AKeyHeldForLongerThanTheRepeatDelayIsOnePress) {
  run("xset r rate 100 50");
  run("xset r 71");
  const auto watch = watchKey("f5");
  ASSERT_TRUE(watch) << watch.error();
  run("xdotool keydown 71");
  runFor(std::chrono::milliseconds(700));
  run("xdotool keydown 71 keydown 71");
  runFor(kSettle);
  EXPECT_THAT(events_, ElementsAre("pressed"));
  run("xdotool keyup 71");
  runFor(kSettle);
  EXPECT_THAT(events_, ElementsAre("pressed", "released"));
}

TEST_F(XInput2KeyWatchTest, EscapeWhileHeldCancelsOnceAndOtherKeysDoNothing) {
  const auto watch = watchKey("right_cmd");
  ASSERT_TRUE(watch) << watch.error();
  run("xdotool keydown 134 key a key Return key F5 keydown 108 keyup 108");
  runFor(kSettle);
  EXPECT_THAT(events_, ElementsAre("pressed"));
  run("xdotool key Escape key Escape");
  run("xdotool keyup 134 key Escape");
  runFor(kSettle);
  EXPECT_THAT(events_, ElementsAre("pressed", "cancelled", "released"));
}

TEST_F(XInput2KeyWatchTest, TheKeyIsReportedWhileAnotherProgramGrabsTheKeyboard) {
  const auto watch = watchKey("f6");
  ASSERT_TRUE(watch) << watch.error();
  const auto grabber = XConnection::open();
  const auto grab = grabber->reply<xcb_grab_keyboard_reply_t>(
      xcb_grab_keyboard(grabber->get(), 1, grabber->root(), XCB_CURRENT_TIME, XCB_GRAB_MODE_ASYNC,
                        XCB_GRAB_MODE_ASYNC));
  ASSERT_TRUE(grab);
  ASSERT_EQ(grab->status, XCB_GRAB_STATUS_SUCCESS);
  run("xdotool key 72");
  runFor(kSettle);
  EXPECT_THAT(events_, ElementsAre("pressed", "released"));
}

TEST_F(XInput2KeyWatchTest, ALayoutChosenWhileTheKeyIsHeldChangesNothing) {
  const auto watch = watchKey("right_opt");
  ASSERT_TRUE(watch) << watch.error();
  run("xdotool keydown 108");
  run("setxkbmap de");
  runFor(kSettle);
  EXPECT_THAT(events_, ElementsAre("pressed"));
  run("xdotool keyup 108");
  runFor(kSettle);
  EXPECT_THAT(events_, ElementsAre("pressed", "released"));
}

TEST_F(XInput2KeyWatchTest, KeysWithOtherCodesAreFoundByTheirNames) {
  const auto watch = watchKey("right_cmd");
  ASSERT_TRUE(watch) << watch.error();
  // The old codes of PC keyboards: the right Super key is 116, elsewhere an arrow.
  run("setxkbmap -keycodes xfree86 -types complete -compat complete -symbols pc+us");
  runFor(kSettle);
  run("xdotool key 134");
  runFor(kSettle);
  EXPECT_THAT(events_, IsEmpty());
  run("xdotool key 116");
  runFor(kSettle);
  EXPECT_THAT(events_, ElementsAre("pressed", "released"));
}

TEST_F(XInput2KeyWatchTest, AServerThatDiesIsReportedOnceAfterTheRelease) {
  const auto watch = watchKey("f5");
  ASSERT_TRUE(watch) << watch.error();
  run("xdotool keydown 71");
  runFor(kSettle);
  display_.kill();
  runFor(kSettle);
  runFor(kSettle);
  EXPECT_THAT(events_, ElementsAre("pressed", "released", "lost"));
}

TEST_F(XInput2KeyWatchTest, WithoutAServerTheErrorSaysSo) {
  display_.kill();
  const auto watch = watchKey("f5");
  ASSERT_FALSE(watch);
  EXPECT_EQ(watch.error(), "there is no X server");
}

TEST_F(XInput2KeyWatchTest, NothingWakesTheProcessWhileNoKeyIsPressed) {
  const auto sleeps = [] {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_nvcsw;
  };
  const auto watch = watchKey("f5");
  ASSERT_TRUE(watch) << watch.error();
  runFor(kSettle);
  const auto before = sleeps();
  runFor(std::chrono::seconds(1));
  EXPECT_LE(sleeps() - before, 1) << "one is the end of the test's wait";
}

TEST_F(XInput2KeyWatchTest, OwnKeysAreIgnoredAndTheUsersSameKeyIsReported) {
  const auto watch = watchKey("f5");
  ASSERT_TRUE(watch) << watch.error();
  ownKeys_.sent(71, true);
  ownKeys_.sent(71, false);
  run("xdotool key 71");
  runFor(kSettle);
  EXPECT_THAT(events_, IsEmpty());
  run("xdotool key 71");
  runFor(kSettle);
  EXPECT_THAT(events_, SizeIs(2));
}

}  // namespace
}  // namespace voxtrel::quillback
