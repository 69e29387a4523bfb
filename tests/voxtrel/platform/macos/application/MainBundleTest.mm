#include <gtest/gtest.h>

#include <filesystem>

#include "support/macos/Growth.h"
#include "support/macos/Observed.h"
#include "support/macos/whole/EngineFolder.h"
#import "voxtrel/platform/macos/application/AppKitApplication.h"
#import "voxtrel/platform/macos/foundation/Strings.h"

namespace voxtrel::testing {
namespace {

/// The application's bundle is the one with the scripted engine.
class MainBundleTest : public ::testing::Test {
 protected:
  static id body(NSBundle* bundle) {
    return ^NSBundle*(Class) {
      return bundle;
    };
  }

  const EngineFolder files;
  NSBundle* const native = [NSBundle bundleWithPath:toNSString(files.path().string())];
  const ReplacedMethod replaced {
    object_getClass(NSBundle.class), @selector(mainBundle), body(native)
  };
  const MainBundle bundle{};
};

TEST_F(MainBundleTest, FindsTheEngineInTheBundle) {
  EXPECT_EQ(bundle.auxiliaryExecutable("quillback"), files.engine().string());
}

TEST_F(MainBundleTest, FindsNothingWhereThereIsNoFile) {
  EXPECT_EQ(bundle.auxiliaryExecutable("other"), std::nullopt);
  std::filesystem::remove(files.engine());
  EXPECT_EQ(bundle.auxiliaryExecutable("quillback"), std::nullopt);
}

TEST_F(MainBundleTest, TakesNoFolderForAProgram) {
  std::filesystem::remove(files.engine());
  std::filesystem::create_directory(files.engine());
  EXPECT_EQ(bundle.auxiliaryExecutable("quillback"), std::nullopt);
}

TEST_F(MainBundleTest, KeepsNothingOfAThousandSearches) {
  expectNoGrowth([this] { EXPECT_TRUE(bundle.auxiliaryExecutable("quillback")); });
}

}  // namespace
}  // namespace voxtrel::testing
