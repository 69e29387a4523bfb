#include <gtest/gtest.h>

#include "voxtrel/platform/linux/notifications/NotificationRequest.h"

namespace voxtrel {
namespace {

constexpr auto kBannerAndSound = static_cast<PresentationOptions>(18);

const NotificationCategory kCategory{
    "CRASH_CATEGORY", {{"RESTART_ACTION", "Restart", true}, {"IGNORE_ACTION", "Ignore", false}}};
const UserNotification kNotification{"id", "Voxtrel", "1 < 2 & \"3\"", "CRASH_CATEGORY"};

NotificationRequest requestWith(const QStringList& capabilities) {
  return makeNotificationRequest(kNotification, &kCategory,
                                 NotificationCapabilities::parse(capabilities), kBannerAndSound);
}

TEST(NotificationRequest, offersTheActionsOfTheCategory) {
  const QStringList expected = {"RESTART_ACTION", "Restart", "IGNORE_ACTION", "Ignore"};
  EXPECT_EQ(requestWith({"body", "actions"}).actions, expected);
}

TEST(NotificationRequest, hasNoButtonsIfTheDaemonSupportsNone) {
  EXPECT_TRUE(requestWith({"body", "action-icons"}).actions.isEmpty());
}

TEST(NotificationRequest, hasNoButtonsWithoutACategory) {
  const auto request =
      makeNotificationRequest(kNotification, nullptr, {true, true}, kBannerAndSound);
  EXPECT_TRUE(request.actions.isEmpty());
}

TEST(NotificationRequest, escapesTheBodyOnlyForADaemonWithMarkup) {
  EXPECT_EQ(requestWith({"body-markup"}).body, "1 &lt; 2 &amp; &quot;3&quot;");
  EXPECT_EQ(requestWith({"body"}).body, "1 < 2 & \"3\"");
  EXPECT_EQ(requestWith({"body-markup"}).summary, "Voxtrel");
}

TEST(NotificationRequest, isSilentOnlyIfNoSoundIsRequested) {
  EXPECT_FALSE(requestWith({}).hints.contains("suppress-sound"));
  const auto silent =
      makeNotificationRequest(kNotification, &kCategory, {}, PresentationOptions::banner);
  EXPECT_EQ(silent.hints.value("suppress-sound"), QVariant(true));
}

TEST(NotificationRequest, namesTheApplication) {
  EXPECT_EQ(requestWith({}).hints.value("desktop-entry"), QVariant("org.voxtrel.Voxtrel"));
}

}  // namespace
}  // namespace voxtrel
