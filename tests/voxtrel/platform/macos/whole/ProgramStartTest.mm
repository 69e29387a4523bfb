#include <gtest/gtest.h>

#include <csignal>

#include "support/macos/RunLoop.h"
#import "support/macos/whole/RunningProgram.h"

namespace voxtrel::testing {
namespace {

class ProgramStartTest : public ::testing::Test {
 protected:
  bool says(const char* text) const {
    return runUntil([&] { return program.said().find(text) != std::string::npos; });
  }

  RunningProgram program;
};

TEST_F(ProgramStartTest, FindsTheEngineInItsBundleAndStartsIt) {
  program.files().provideWeights();
  program.start();
  EXPECT_TRUE(runUntil([&] { return program.files().find().has_value(); })) << program.said();
  EXPECT_TRUE(says("org.voxtrel.Voxtrel:main [1] Voxtrel launching"));
  EXPECT_TRUE(says("org.voxtrel.Voxtrel:ui [1] StatusBarController initialized"));
}

TEST_F(ProgramStartTest, FetchesTheModelFirst) {
  program.start();
  EXPECT_TRUE(runUntil([&] { return program.files().find().has_value(); }))
      << "the set-up that plays a download succeeds: " << program.said();
}

TEST_F(ProgramStartTest, GoesOnAfterItsStandardErrorIsGone) {
  program.files().provideWeights();
  program.start();
  ASSERT_TRUE(runUntil([&] { return program.files().find().has_value(); })) << program.said();
  program.signal(SIGPIPE);
  program.files().tell("print Ready.");
  EXPECT_FALSE(program.end(std::chrono::milliseconds(300)));
}

TEST_F(ProgramStartTest, SaysThatOtherRequestsAreForTheMenu) {
  for (const char* option : {"--quit", "--restart"}) {
    program.start({}, {option});
    EXPECT_EQ(program.end(), 1) << option;
  }
  EXPECT_TRUE(says("voxtrel: on macOS, choose this in the menu of the application"));
  EXPECT_FALSE(program.files().find());
}

TEST_F(ProgramStartTest, PrintsItsVersionWithoutADesktop) {
  program.start({"DISPLAY="}, {"--version"});
  EXPECT_EQ(program.end(), 0);
  EXPECT_TRUE(says("voxtrel 0."));
}

}  // namespace
}  // namespace voxtrel::testing
