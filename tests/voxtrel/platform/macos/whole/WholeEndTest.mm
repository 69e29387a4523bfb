#include <functional>

#import "support/macos/whole/WholeApplication.h"

namespace voxtrel::testing {
namespace {

using namespace std::chrono_literals;

class WholeEndTest : public WholeApplication {
 protected:
  static std::chrono::steady_clock::duration timeOf(const std::function<void()>& task) {
    const auto start = std::chrono::steady_clock::now();
    task();
    return std::chrono::steady_clock::now() - start;
  }
};

TEST_F(WholeEndTest, QuitEndsTheEngineFirst) {
  launchToEngine();
  choose(kQuitRow);
  EXPECT_EQ(application.terminations, 1);
  EXPECT_FALSE(engineRuns());
}

TEST_F(WholeEndTest, ARequestOfTheSystemIsAsQuit) {
  launchToEngine();
  application.delegate->quitRequested();
  EXPECT_EQ(application.terminations, 1);
  EXPECT_FALSE(engineRuns());
}

TEST_F(WholeEndTest, AnEndWithoutQuitEndsTheEngineToo) {
  launchToEngine();
  application.delegate->applicationWillTerminate();
  EXPECT_FALSE(engineRuns());
}

TEST_F(WholeEndTest, AnEngineThatIgnoresQuitIsKilledAfterTwoSeconds) {
  launchToEngine();
  tell("ignore-term");
  const auto time = timeOf([&] { choose(kQuitRow); });
  EXPECT_EQ(application.terminations, 1);
  EXPECT_FALSE(engineRuns());
  EXPECT_GE(time, 1900ms);
  EXPECT_LT(time, 4000ms);
}

TEST_F(WholeEndTest, ARequestWithoutAnEngineEndsAtOnce) {
  files.scriptSetup("");
  launch();
  ASSERT_TRUE(opens(@"Voxtrel Setup"));
  application.delegate->quitRequested();
  EXPECT_EQ(application.terminations, 1);
}

TEST_F(WholeEndTest, TheEngineGoesWithAnApplicationThatIsDestroyed) {
  launchToEngine();
  destroy();
  EXPECT_TRUE(engineEnds());
}

TEST_F(WholeEndTest, TheMenuReachesNothingOnceTheApplicationIsGone) {
  launchToEngine();
  destroy();
  ASSERT_TRUE(engineEnds());
  choose(kRestartRow);
  choose(kSettingsRow);
  choose(kQuitRow);
  runFor(100ms);
  EXPECT_FALSE(engineRuns());
  EXPECT_TRUE(window(@"Voxtrel Settings") == nil);
  EXPECT_EQ(application.terminations, 0);
}

}  // namespace
}  // namespace voxtrel::testing
