#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/FakePorts.h"
#include "voxtrel/platform/linux/permissions/SessionKeyTrust.h"

namespace voxtrel {
namespace {

using testing::FakeNotifications;
using ::testing::HasSubstr;

TEST(SessionFactsTest, theKeyIsVisibleByXInputUnderX11AndByAKeyboardOrThePortalUnderWayland) {
  for (int bits = 0; bits < 8; ++bits) {
    const bool xInput = (bits & 1) != 0;
    const bool keyboard = (bits & 2) != 0;
    const bool portal = (bits & 4) != 0;
    EXPECT_EQ(isKeyVisible({SessionKind::x11, xInput, keyboard, portal}), xInput) << bits;
    EXPECT_EQ(isKeyVisible({SessionKind::wayland, xInput, keyboard, portal}), keyboard || portal)
        << bits;
  }
}

/// A session in which the test decides everything.
struct ASession : ::testing::Test {
  explicit ASession(SessionKind kind)
      : trust({.session = kind,
               .offersXInput2 =
                   [this] {
                     ++xQuestions;
                     return xInput;
                   },
               .canReadKeyboard = [this] { return keyboard; },
               .askPortal =
                   [this](auto answer) {
                     ++portalQuestions;
                     answerOfPortal = std::move(answer);
                   }},
              notifications) {}

  bool xInput = false;
  bool keyboard = false;
  int xQuestions = 0;
  int portalQuestions = 0;
  std::function<void(bool)> answerOfPortal;
  FakeNotifications notifications;
  SessionKeyTrust trust;
};

struct AnX11Session : ASession {
  AnX11Session() : ASession(SessionKind::x11) {}
};

struct AWaylandSession : ASession {
  AWaylandSession() : ASession(SessionKind::wayland) {}
};

TEST_F(AnX11Session, isAskedAfreshEveryTimeAndNeedsNoPortal) {
  EXPECT_FALSE(trust.isTrusted(false));
  xInput = true;
  EXPECT_TRUE(trust.isTrusted(false));
  EXPECT_EQ(xQuestions, 2);
  EXPECT_EQ(portalQuestions, 0);
}

TEST_F(AnX11Session, promptsAtOnceOnceAndOnlyWhenTold) {
  trust.isTrusted(false);
  EXPECT_TRUE(notifications.posted.empty());
  trust.isTrusted(true);
  trust.isTrusted(true);
  ASSERT_EQ(notifications.posted.size(), 1U);
  EXPECT_THAT(notifications.posted[0].body, HasSubstr("XInput 2"));
}

TEST_F(AnX11Session, thatIsTrustedIsNotPrompted) {
  xInput = true;
  trust.isTrusted(true);
  xInput = false;
  trust.isTrusted(false);
  EXPECT_TRUE(notifications.posted.empty());
}

TEST_F(AWaylandSession, withAReadableKeyboardNeedsNoPortal) {
  keyboard = true;
  EXPECT_TRUE(trust.isTrusted(true));
  EXPECT_EQ(portalQuestions, 0);
  EXPECT_TRUE(notifications.posted.empty());
}

TEST_F(AWaylandSession, noticesAKeyboardThatBecomesReadableAndOneThatIsTakenAway) {
  EXPECT_FALSE(trust.isTrusted(false));
  keyboard = true;
  EXPECT_TRUE(trust.isTrusted(false));
  keyboard = false;
  EXPECT_FALSE(trust.isTrusted(false));
}

TEST_F(AWaylandSession, answersWithThePortalsNewestAnswerAndAsksAgain) {
  EXPECT_FALSE(trust.isTrusted(false));
  answerOfPortal(true);
  EXPECT_TRUE(trust.isTrusted(false));
  EXPECT_EQ(portalQuestions, 2);
  answerOfPortal(false);
  EXPECT_FALSE(trust.isTrusted(false));
}

TEST_F(AWaylandSession, asksThePortalNothingWhileItOwesAnAnswer) {
  for (int tick = 0; tick < 5; ++tick) trust.isTrusted(false);
  EXPECT_EQ(portalQuestions, 1);
}

TEST_F(AWaylandSession, promptsOnlyOnceThePortalHasSaidNo) {
  trust.isTrusted(true);
  EXPECT_TRUE(notifications.posted.empty());
  answerOfPortal(false);
  ASSERT_EQ(notifications.posted.size(), 1U);
  trust.isTrusted(false);
  answerOfPortal(false);
  EXPECT_EQ(notifications.posted.size(), 1U);
}

TEST_F(AWaylandSession, whosePortalOffersShortcutsIsNotPrompted) {
  trust.isTrusted(true);
  answerOfPortal(true);
  trust.isTrusted(false);
  answerOfPortal(false);
  EXPECT_TRUE(notifications.posted.empty());
}

TEST_F(AWaylandSession, thatIsTrustedBeforeThePortalAnswersIsNotPrompted) {
  trust.isTrusted(true);
  keyboard = true;
  trust.isTrusted(false);
  answerOfPortal(false);
  EXPECT_TRUE(notifications.posted.empty());
}

TEST_F(AWaylandSession, isToldOfTheGroupAndOfX11WithoutAnyButton) {
  trust.isTrusted(true);
  answerOfPortal(false);
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
