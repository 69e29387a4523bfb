#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/FakePorts.h"
#include "voxtrel/platform/linux/permissions/KeyHidden.h"
#include "voxtrel/platform/linux/permissions/SessionKeyTrust.h"

namespace voxtrel {
namespace {

using ::testing::EndsWith;
using testing::FakeNotifications;
using ::testing::HasSubstr;
using ::testing::Not;

const KeyAnswer kSeen{.isSeen = true, .reason = {}};
const KeyAnswer kNotSeen{.isSeen = false, .reason = "Right Cmd cannot be seen: no keyboard"};

/// A session whose facts the test decides.
struct SessionFixture : ::testing::Test {
  explicit SessionFixture(SessionKind kind)
      : trust({.session = kind,
               .desktops = "sway",
               .offersXInput2 =
                   [this] {
                     ++xCalls;
                     return xInput;
                   },
               .askEngine =
                   [this](auto onReply) {
                     ++engineCalls;
                     if (atOnce) return onReply(*atOnce);
                     engineReplies = std::move(onReply);
                   }},
              notifications) {}

  bool xInput = false;
  int xCalls = 0;
  int engineCalls = 0;
  std::optional<KeyAnswer> atOnce;
  std::function<void(const KeyAnswer&)> engineReplies;
  FakeNotifications notifications;
  SessionKeyTrust trust;
};

struct X11SessionFixture : SessionFixture {
  X11SessionFixture() : SessionFixture(SessionKind::x11) {}
};

struct WaylandSessionFixture : SessionFixture {
  WaylandSessionFixture() : SessionFixture(SessionKind::wayland) {}
};

TEST_F(X11SessionFixture, theServerIsAskedEveryTimeAndTheEngineNever) {
  EXPECT_FALSE(trust.isTrusted(false));
  xInput = true;
  EXPECT_TRUE(trust.isTrusted(false));
  EXPECT_EQ(xCalls, 2);
  EXPECT_EQ(engineCalls, 0);
}

TEST_F(X11SessionFixture, promptsImmediatelyOnceAndOnlyOnRequest) {
  trust.isTrusted(false);
  EXPECT_TRUE(notifications.posted.empty());
  trust.isTrusted(true);
  trust.isTrusted(true);
  ASSERT_EQ(notifications.posted.size(), 1U);
  EXPECT_THAT(notifications.posted[0].body, HasSubstr("XInput 2"));
}

TEST_F(X11SessionFixture, doesNotPromptWhenTrusted) {
  xInput = true;
  trust.isTrusted(true);
  xInput = false;
  trust.isTrusted(false);
  EXPECT_TRUE(notifications.posted.empty());
}

TEST_F(WaylandSessionFixture, aReplyAtOnceIsTheAnswer) {
  atOnce = kSeen;
  EXPECT_TRUE(trust.isTrusted(true));
  EXPECT_TRUE(notifications.posted.empty());
  atOnce = kNotSeen;
  EXPECT_FALSE(trust.isTrusted(false));
}

TEST_F(WaylandSessionFixture, usesTheEnginesNewestReplyAndAsksAgain) {
  EXPECT_FALSE(trust.isTrusted(false));
  engineReplies(kSeen);
  EXPECT_TRUE(trust.isTrusted(false));
  EXPECT_EQ(engineCalls, 1) << "the reply came between the questions";
  EXPECT_TRUE(trust.isTrusted(false));
  EXPECT_EQ(engineCalls, 2);
  engineReplies(kNotSeen);
  EXPECT_FALSE(trust.isTrusted(false));
  EXPECT_EQ(xCalls, 0);
}

TEST_F(WaylandSessionFixture, doesNotAskTheEngineAgainBeforeItsReply) {
  for (int tick = 0; tick < 5; ++tick) trust.isTrusted(false);
  EXPECT_EQ(engineCalls, 1);
}

TEST_F(WaylandSessionFixture, promptsOnceAndOnlyAfterTheEngineSaysNo) {
  trust.isTrusted(true);
  EXPECT_TRUE(notifications.posted.empty());
  engineReplies(kNotSeen);
  ASSERT_EQ(notifications.posted.size(), 1U);
  trust.isTrusted(true);
  engineReplies(kNotSeen);
  EXPECT_EQ(notifications.posted.size(), 1U);
}

TEST_F(WaylandSessionFixture, doesNotPromptIfTheEngineSeesTheKey) {
  trust.isTrusted(true);
  engineReplies(kSeen);
  trust.isTrusted(false);
  engineReplies(kNotSeen);
  EXPECT_TRUE(notifications.posted.empty());
}

TEST_F(WaylandSessionFixture, theNotificationSaysWhyAtItsEndAndHasNoButton) {
  trust.isTrusted(true);
  engineReplies(kNotSeen);
  ASSERT_EQ(notifications.posted.size(), 1U);
  const UserNotification& posted = notifications.posted[0];
  EXPECT_EQ(posted.title, "Voxtrel cannot see the push-to-talk key");
  EXPECT_THAT(posted.body, EndsWith(" Right Cmd cannot be seen: no keyboard."));
  EXPECT_THAT(posted.body, HasSubstr("quillback key press"));
  EXPECT_EQ(posted.categoryIdentifier, "");
  EXPECT_NE(posted.identifier, "");
}

TEST(KeyHiddenTest, everyWaylandDesktopIsToldOfTheGroupAndX11AndOfAWayOfItsOwn) {
  const struct {
    const char* desktops;
    const char* ownWay;
  } rows[] = {{"ubuntu:GNOME", "\"quillback key toggle\" a shortcut"},
              {"KDE", "Install xdg-desktop-portal-kde"},
              {"sway", "\"quillback key press\" and \"quillback key release\""},
              {"", "\"quillback key press\" and \"quillback key release\""}};
  for (const auto& row : rows) {
    const std::string body =
        keyHiddenNotification(SessionKind::wayland, desktopFamily(row.desktops), "").body;
    EXPECT_THAT(body, HasSubstr(row.ownWay));
    EXPECT_THAT(body, HasSubstr("usermod -aG input"));
    EXPECT_THAT(body, HasSubstr("X11"));
    EXPECT_THAT(body, Not(HasSubstr("Privacy")));
  }
}

TEST(KeyHiddenTest, theAdviceComesBeforeWhatNotificationsCut) {
  constexpr std::size_t kTwoLines = 110;
  const struct {
    DesktopFamily desktop;
    const char* end;
  } rows[] = {{DesktopFamily::gnome, "press it once."},
              {DesktopFamily::kde, "log in again."},
              {DesktopFamily::other, "\"quillback key release\""}};
  for (const auto& row : rows) {
    const auto body = keyHiddenNotification(SessionKind::wayland, row.desktop, "a reason").body;
    EXPECT_THAT(body.substr(0, kTwoLines), HasSubstr(row.end));
  }
}

TEST(KeyHiddenTest, theReasonIsTheLastSentence) {
  const auto body = [](const std::string& reason) {
    return keyHiddenNotification(SessionKind::wayland, DesktopFamily::gnome, reason).body;
  };
  EXPECT_THAT(body("the key is hidden"), EndsWith(" log in again. The key is hidden."));
  EXPECT_THAT(body(""), EndsWith(" log in again."));
}

TEST(EngineCheckTest, onlyStatusOneMeansThatTheKeyCannotBeSeen) {
  constexpr bool kExited = true;
  EXPECT_TRUE(keyAnswer(kExited, 0, "key: yes, Right Cmd by the keyboards\n").isSeen);
  EXPECT_FALSE(keyAnswer(kExited, 1, "").isSeen);
  EXPECT_TRUE(keyAnswer(kExited, 2, "").isSeen) << "an engine that does not know the question";
  EXPECT_TRUE(keyAnswer(kExited, 127, "").isSeen);
  EXPECT_TRUE(keyAnswer(!kExited, 1, "").isSeen) << "a signal";
}

TEST(EngineCheckTest, theReasonIsTheFirstLineWithoutItsNameAndItsFullStop) {
  EXPECT_EQ(keyAnswer(true, 1, "key: no, it is hidden\nsession: Wayland\n").reason, "it is hidden");
  EXPECT_EQ(keyAnswer(true, 1, "key: no, it is hidden").reason, "it is hidden");
  EXPECT_EQ(keyAnswer(true, 1, "There is no keyboard.\n").reason, "There is no keyboard");
  EXPECT_EQ(keyAnswer(true, 1, "").reason, "");
}

}  // namespace
}  // namespace voxtrel
