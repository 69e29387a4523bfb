#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/FakePorts.h"
#include "voxtrel/platform/linux/permissions/SessionKeyTrust.h"

namespace voxtrel {
namespace {

using testing::FakeNotifications;
using ::testing::HasSubstr;

TEST(SessionFactsTest,
     theKeyIsVisibleThroughXInputUnderX11AndThroughAKeyboardOrThePortalUnderWayland) {
  for (int bits = 0; bits < 8; ++bits) {
    const bool xInput = (bits & 1) != 0;
    const bool keyboard = (bits & 2) != 0;
    const bool portal = (bits & 4) != 0;
    EXPECT_EQ(isKeyVisible({SessionKind::x11, xInput, keyboard, portal}), xInput) << bits;
    EXPECT_EQ(isKeyVisible({SessionKind::wayland, xInput, keyboard, portal}), keyboard || portal)
        << bits;
  }
}

/// A session whose facts the test decides.
struct SessionFixture : ::testing::Test {
  explicit SessionFixture(SessionKind kind)
      : trust({.session = kind,
               .offersXInput2 =
                   [this] {
                     ++xCalls;
                     return xInput;
                   },
               .canReadKeyboard = [this] { return keyboard; },
               .askPortal =
                   [this](auto onReply) {
                     ++portalCalls;
                     portalReplies = std::move(onReply);
                   }},
              notifications) {}

  bool xInput = false;
  bool keyboard = false;
  int xCalls = 0;
  int portalCalls = 0;
  std::function<void(bool)> portalReplies;
  FakeNotifications notifications;
  SessionKeyTrust trust;
};

struct X11SessionFixture : SessionFixture {
  X11SessionFixture() : SessionFixture(SessionKind::x11) {}
};

struct WaylandSessionFixture : SessionFixture {
  WaylandSessionFixture() : SessionFixture(SessionKind::wayland) {}
};

TEST_F(X11SessionFixture, theServerIsAskedEveryTimeAndThePortalNever) {
  EXPECT_FALSE(trust.isTrusted(false));
  xInput = true;
  EXPECT_TRUE(trust.isTrusted(false));
  EXPECT_EQ(xCalls, 2);
  EXPECT_EQ(portalCalls, 0);
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

TEST_F(WaylandSessionFixture, aReadableKeyboardNeedsNoPortal) {
  keyboard = true;
  EXPECT_TRUE(trust.isTrusted(true));
  EXPECT_EQ(portalCalls, 0);
  EXPECT_TRUE(notifications.posted.empty());
}

TEST_F(WaylandSessionFixture, noticesWhenAKeyboardBecomesReadableOrUnreadable) {
  EXPECT_FALSE(trust.isTrusted(false));
  keyboard = true;
  EXPECT_TRUE(trust.isTrusted(false));
  keyboard = false;
  EXPECT_FALSE(trust.isTrusted(false));
}

TEST_F(WaylandSessionFixture, usesThePortalsNewestReplyAndAsksAgain) {
  EXPECT_FALSE(trust.isTrusted(false));
  portalReplies(true);
  EXPECT_TRUE(trust.isTrusted(false));
  EXPECT_EQ(portalCalls, 2);
  portalReplies(false);
  EXPECT_FALSE(trust.isTrusted(false));
}

TEST_F(WaylandSessionFixture, doesNotAskThePortalAgainBeforeItsReply) {
  for (int tick = 0; tick < 5; ++tick) trust.isTrusted(false);
  EXPECT_EQ(portalCalls, 1);
}

TEST_F(WaylandSessionFixture, promptsOnlyAfterThePortalSaysNo) {
  trust.isTrusted(true);
  EXPECT_TRUE(notifications.posted.empty());
  portalReplies(false);
  ASSERT_EQ(notifications.posted.size(), 1U);
  trust.isTrusted(false);
  portalReplies(false);
  EXPECT_EQ(notifications.posted.size(), 1U);
}

TEST_F(WaylandSessionFixture, doesNotPromptIfThePortalOffersShortcuts) {
  trust.isTrusted(true);
  portalReplies(true);
  trust.isTrusted(false);
  portalReplies(false);
  EXPECT_TRUE(notifications.posted.empty());
}

TEST_F(WaylandSessionFixture, doesNotPromptIfTrustedBeforeThePortalReplies) {
  trust.isTrusted(true);
  keyboard = true;
  trust.isTrusted(false);
  portalReplies(false);
  EXPECT_TRUE(notifications.posted.empty());
}

TEST_F(WaylandSessionFixture, theNotificationNamesTheGroupAndX11AndHasNoButton) {
  trust.isTrusted(true);
  portalReplies(false);
  ASSERT_EQ(notifications.posted.size(), 1U);
  const UserNotification& posted = notifications.posted[0];
  EXPECT_EQ(posted.title, "Voxtrel cannot see the push-to-talk key");
  EXPECT_THAT(posted.body, HasSubstr("usermod -aG input"));
  EXPECT_THAT(posted.body, HasSubstr("X11"));
  EXPECT_EQ(posted.categoryIdentifier, "");
  EXPECT_NE(posted.identifier, "");
}

}  // namespace
}  // namespace voxtrel
