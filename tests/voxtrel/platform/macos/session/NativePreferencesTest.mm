#include <gtest/gtest.h>

#import "rig_services.h"
#include "support/macos/Growth.h"
#import "voxtrel/platform/macos/session/NativePreferences.h"

namespace voxtrel {
namespace {

struct NativePreferencesTest : testing::Test {
  NativePreferencesTest() {
    [RigServices setLoginItemError:nil];
    [SMAppService.mainAppService unregisterAndReturnError:nullptr];
  }
  ~NativePreferencesTest() override { [RigServices setLoginItemError:nil]; }

  static void refuse() {
    [RigServices setLoginItemError:[NSError errorWithDomain:@"SMAppServiceErrorDomain"
                                                       code:1
                                                   userInfo:nil]];
  }

  MainAppLoginItem loginItem;
  StandardUserDefaults defaults;
};

TEST_F(NativePreferencesTest, theLoginItemIsEnabledAndDisabled) {
  EXPECT_FALSE(loginItem.isEnabled());
  EXPECT_TRUE(loginItem.enable());
  EXPECT_TRUE(loginItem.isEnabled());
  EXPECT_TRUE(loginItem.disable());
  EXPECT_FALSE(loginItem.isEnabled());
}

TEST_F(NativePreferencesTest, aRefusalIsReportedAndChangesNothing) {
  refuse();
  EXPECT_FALSE(loginItem.enable());
  EXPECT_FALSE(loginItem.isEnabled());
}

TEST_F(NativePreferencesTest, anErrorDoesNotCountWhereItAlreadyIsAsAsked) {
  ASSERT_TRUE(loginItem.enable());
  refuse();
  EXPECT_TRUE(loginItem.enable());
  EXPECT_FALSE(loginItem.disable());
}

TEST_F(NativePreferencesTest, restoringEnablesItWhereTheSystemLetsUs) {
  EXPECT_TRUE(loginItem.restore());
  ASSERT_TRUE(loginItem.disable());
  refuse();
  EXPECT_FALSE(loginItem.restore());
}

TEST_F(NativePreferencesTest, aKeyThatWasNeverSetIsFalse) {
  EXPECT_FALSE(defaults.boolForKey("neverSet"));
}

TEST_F(NativePreferencesTest, aValueIsKeptAndSeenByTheSystem) {
  defaults.setBool("launchAtLogin", true);
  EXPECT_TRUE(StandardUserDefaults().boolForKey("launchAtLogin"));
  EXPECT_TRUE([NSUserDefaults.standardUserDefaults boolForKey:@"launchAtLogin"]);
  defaults.setBool("launchAtLogin", false);
  EXPECT_FALSE(defaults.boolForKey("launchAtLogin"));
}

TEST_F(NativePreferencesTest, aThousandRoundsKeepNothing) {
  expectNoGrowth([this] {
    EXPECT_TRUE(loginItem.enable());
    EXPECT_TRUE(loginItem.disable());
    defaults.setBool("launchAtLogin", true);
    EXPECT_TRUE(defaults.boolForKey("launchAtLogin"));
  });
}

}  // namespace
}  // namespace voxtrel
