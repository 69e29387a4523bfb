#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "voxtrel/platform/linux/tray/TrayStatusItem.h"

namespace voxtrel {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

TEST(NoTrayTest, theNotificationSaysWhatToInstallAndHowToReachTheProgram) {
  const std::string gnome = noTrayNotification("GNOME").body;
  EXPECT_THAT(gnome, HasSubstr("gnome-shell-extension-appindicator"));
  const std::string other = noTrayNotification("sway").body;
  EXPECT_THAT(other, HasSubstr("waybar"));
  EXPECT_THAT(other, Not(HasSubstr("GNOME")));
  for (const std::string& body : {gnome, other}) {
    for (const char* option : {"--settings", "--restart", "--quit"}) {
      EXPECT_THAT(body, HasSubstr(option));
    }
  }
}

}  // namespace
}  // namespace voxtrel
