#import <AVFoundation/AVFoundation.h>
#import <AppKit/AppKit.h>
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string>
#include <vector>

#import "rig_audio.h"
#import "rig_services.h"
#include "support/macos/Growth.h"
#include "support/macos/Observed.h"
#include "support/macos/RunLoop.h"
#include "voxtrel/platform/macos/permissions/PrivacyPermissions.h"

namespace voxtrel::testing {
namespace {

class PrivacyPermissionsTest : public ::testing::Test {
 protected:
  ~PrivacyPermissionsTest() override {
    [RigServices setAccessibilityTrusted:NO];
    [RigAudio setPermission:YES];
  }
};

TEST_F(PrivacyPermissionsTest, PromptsForAccessibilityOnlyWhenAskedTo) {
  [RigServices setAccessibilityTrusted:NO];
  const int before = [RigServices accessibilityPrompts];
  ProcessTrust trust;
  EXPECT_FALSE(trust.isTrusted(false));
  EXPECT_EQ([RigServices accessibilityPrompts], before);
  EXPECT_FALSE(trust.isTrusted(true));
  EXPECT_EQ([RigServices accessibilityPrompts], before + 1);
}

TEST_F(PrivacyPermissionsTest, SeesTrustThatIsGrantedWhileItPolls) {
  const int before = [RigServices accessibilityPrompts];
  ProcessTrust trust;
  EXPECT_FALSE(trust.isTrusted(false));
  [RigServices setAccessibilityTrusted:YES];
  EXPECT_TRUE(trust.isTrusted(false));
  EXPECT_TRUE(trust.isTrusted(true));
  EXPECT_EQ([RigServices accessibilityPrompts], before) << "nobody is asked for what is granted";
}

TEST_F(PrivacyPermissionsTest, GivesTheUsersAnswerAboutTheMicrophone) {
  for (const bool granted : {true, false}) {
    [RigAudio setPermission:granted];
    std::atomic<int> answer = -1;
    CaptureAccess().request([&](bool given) { answer = given ? 1 : 0; });
    EXPECT_TRUE(runUntil([&] { return answer == (granted ? 1 : 0); })) << granted;
  }
}

TEST_F(PrivacyPermissionsTest, KeepsNothingOfARequestInAThousandRounds) {
  constexpr int kRounds = 1000;
  const auto owner = std::make_shared<int>(0);
  std::atomic<int> answers = 0;
  CaptureAccess access;
  for (int round = 0; round < kRounds; ++round) {
    @autoreleasepool {
      access.request([owner, &answers](bool) { ++answers; });
    }
  }
  EXPECT_TRUE(runUntil([&] { return answers == kRounds && owner.use_count() == 1; }))
      << owner.use_count();
}

TEST_F(PrivacyPermissionsTest, KeepsNothingOfAThousandPolls) {
  [RigServices setAccessibilityTrusted:NO];
  expectNoGrowth([] {
    EXPECT_FALSE(ProcessTrust().isTrusted(false));
    EXPECT_FALSE(ProcessTrust().isTrusted(true));
  });
}

TEST_F(PrivacyPermissionsTest, OpensThePanesOfSystemSettingsAndBearsARefusal) {
  const OpenedAddresses opened;
  SettingsPanes panes;
  panes.open(PrivacyPane::microphone);
  panes.open(PrivacyPane::accessibility);
  const std::string pane = "x-apple.systempreferences:com.apple.preference.security?Privacy_";
  EXPECT_EQ(opened.get(), (std::vector<std::string>{pane + "Microphone", pane + "Accessibility"}));
}

TEST_F(PrivacyPermissionsTest, KeepsNothingOfAThousandPanes) {
  const ReplacedMethod refused(NSWorkspace.class, @selector(openURL:), ^BOOL(NSWorkspace*, NSURL*) {
    return NO;
  });
  expectNoGrowth([] { SettingsPanes().open(PrivacyPane::microphone); });
}

}  // namespace
}  // namespace voxtrel::testing
