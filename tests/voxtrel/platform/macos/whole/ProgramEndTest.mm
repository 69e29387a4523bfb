#include <gtest/gtest.h>

#include <csignal>

#include "support/macos/RunLoop.h"
#import "support/macos/whole/RunningProgram.h"

namespace voxtrel::testing {
namespace {

using Mode = EngineFolder::Mode;

/// A program, an engine or a setup, and the guard that ends it.
constexpr std::size_t kWholeFamily = 3;

class ProgramEndTest : public ::testing::Test {
 protected:
  void startToEngine() {
    program.files().provideWeights();
    program.start();
    ASSERT_TRUE(runUntil([&] { return program.files().find().has_value(); })) << program.said();
  }
  void startToSetup() {
    program.files().scriptSetup("");
    program.start();
    ASSERT_TRUE(runUntil([&] { return program.files().find(Mode::setup).has_value(); }))
        << program.said();
  }
  bool says(const char* text) const {
    return runUntil([&] { return program.said().find(text) != std::string::npos; });
  }
  /// A process has no environment for a moment while it becomes another program.
  bool isWhole() const {
    return runUntil([&] { return program.family().size() == kWholeFamily; });
  }
  /// Whether all that the program started is gone within a second.
  bool leavesNobody() const {
    return runUntil([&] { return program.family().empty(); }, std::chrono::seconds(1));
  }

  RunningProgram program;
};

TEST_F(ProgramEndTest, SigtermIsAsQuit) {
  startToEngine();
  EXPECT_TRUE(isWhole());
  program.signal(SIGTERM);
  EXPECT_EQ(program.end(), 0) << program.said();
  EXPECT_TRUE(leavesNobody());
  EXPECT_TRUE(says("Voxtrel launching"));
  EXPECT_TRUE(says("Voxtrel terminating"));
}

TEST_F(ProgramEndTest, SigintAndSighupAreToo) {
  for (const int number : {SIGINT, SIGHUP}) {
    startToEngine();
    program.signal(number);
    EXPECT_EQ(program.end(), 0) << number;
    EXPECT_TRUE(leavesNobody());
  }
}

TEST_F(ProgramEndTest, QuitInTheMenuEndsItAndTheEngine) {
  startToEngine();
  program.choose("Quit Voxtrel");
  EXPECT_EQ(program.end(), 0) << program.said();
  EXPECT_TRUE(leavesNobody());
}

TEST_F(ProgramEndTest, SigtermEndsItWhileAnAlertIsOpen) {
  program.files().provideWeights();
  program.start({"VOXTREL_USER_REFUSES=microphone"});
  ASSERT_TRUE(says("Microphone permission denied")) << program.said();
  EXPECT_FALSE(program.end(std::chrono::milliseconds(300))) << "the alert waits for its answer";
  program.signal(SIGTERM);
  EXPECT_EQ(program.end(), 0) << program.said();
  EXPECT_TRUE(leavesNobody());
}

TEST_F(ProgramEndTest, SigtermEndsASetupThatRuns) {
  startToSetup();
  program.signal(SIGTERM);
  EXPECT_EQ(program.end(), 0) << program.said();
  EXPECT_TRUE(leavesNobody());
}

TEST_F(ProgramEndTest, SigkillTakesTheEngineAlong) {
  startToEngine();
  EXPECT_TRUE(isWhole());
  program.signal(SIGKILL);
  EXPECT_EQ(program.end(), SIGKILL);
  EXPECT_TRUE(leavesNobody());
}

TEST_F(ProgramEndTest, SigkillTakesAnEngineAlongThatIgnoresRequests) {
  startToEngine();
  program.files().tell("ignore-term");
  program.signal(SIGKILL);
  EXPECT_EQ(program.end(), SIGKILL);
  EXPECT_TRUE(leavesNobody());
}

TEST_F(ProgramEndTest, SigkillTakesASetupAlong) {
  startToSetup();
  EXPECT_TRUE(isWhole());
  program.signal(SIGKILL);
  EXPECT_EQ(program.end(), SIGKILL);
  EXPECT_TRUE(leavesNobody());
}

TEST_F(ProgramEndTest, ASecondSigtermDoesNotHarmTheFirst) {
  startToEngine();
  program.files().tell("on-term 0 300");
  program.signal(SIGTERM);
  program.signal(SIGTERM);
  EXPECT_EQ(program.end(), 0) << program.said();
  EXPECT_TRUE(leavesNobody());
}

}  // namespace
}  // namespace voxtrel::testing
