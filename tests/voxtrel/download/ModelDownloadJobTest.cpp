#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "support/DownloadFixture.h"

namespace voxtrel {
namespace {

using namespace std::chrono_literals;
using testing::DownloadFixture;
using State = DownloadFixture::State;
using Kind = State::Kind;
using Texts = std::vector<std::string>;

constexpr const char* kConnecting = "Connecting to HuggingFace...";
constexpr const char* kProgress = "812.4 MB / 3094.1 MB (26.3%)\n";

State failed(const std::string& message) {
  return {Kind::error, message};
}

struct Setup : ::testing::Test, DownloadFixture {
  void expectProgress() const {
    EXPECT_EQ(view->downloadProgress(), 0.263);
    EXPECT_EQ(view->amountText(), "812.4 MB / 3094.1 MB");
  }
};

// Starting

TEST_F(Setup, RunsTheSetupOfTheOneModelInTheEnginesFolder) {
  bundle.engine = "/bin/sh";
  appear();
  ASSERT_EQ(launcher.children.size(), 1U);
  const ChildOptions& options = launcher.last().options;
  EXPECT_EQ(options.executable, "/bin/sh");
  EXPECT_EQ(options.arguments, (Texts{"setup", "--model", "large-v3"}));
  EXPECT_EQ(options.workingDirectory, "/bin");
  EXPECT_EQ(bundle.askedFor, Texts{"quillback"});
}

TEST_F(Setup, StartsOnTheBackgroundQueue) {
  view->appeared();
  EXPECT_TRUE(launcher.startedAt.empty());
  time.sleepFor(0ms);  // the main thread is blocked, background threads run
  EXPECT_EQ(launcher.startedAt.size(), 1U);
}

TEST_F(Setup, StartsOnceEvenIfItsWindowAppearsAgain) {
  view->appeared();
  view->appeared();
  appear();
  appear();
  EXPECT_EQ(launcher.startedAt.size(), 1U);
  exit(1);
  appear();
  EXPECT_EQ(launcher.startedAt.size(), 1U);
  EXPECT_TRUE(view->showsError());
  EXPECT_EQ(log(), Texts{kConnecting});
}

TEST_F(Setup, NamesTheMissingEngine) {
  bundle.engine = "/nonexistent/quillback";
  appear();
  EXPECT_EQ(view->downloadState(), failed("quillback binary not found at /nonexistent/quillback"));
  EXPECT_TRUE(launcher.startedAt.empty());
  EXPECT_EQ(changes, 1);
  expectReset();
}

TEST_F(Setup, FallsBackToTheUsualPlaceOfTheEngine) {
  if (std::filesystem::exists("/usr/local/bin/quillback"))
    GTEST_SKIP() << "an engine is installed here";
  bundle.engine.reset();
  appear();
  EXPECT_EQ(view->downloadState(),
            failed("quillback binary not found at /usr/local/bin/quillback"));
}

TEST_F(Setup, SaysWhyTheSetupCouldNotBeLaunched) {
  launcher.failure = "Cannot start it: Permission denied";
  appear();
  EXPECT_EQ(view->downloadState(), failed("Failed to launch: Cannot start it: Permission denied"));
  EXPECT_EQ(changes, 2);
  expectReset();
}

// Output

TEST_F(Setup, MovesTheBarWithoutALogLine) {
  appear();
  print(kProgress);
  expectProgress();
  EXPECT_EQ(log(), Texts{kConnecting});
  EXPECT_EQ(changes, 2);
}

TEST_F(Setup, LogsEveryOtherLineUnchanged) {
  appear();
  print("  Fetching 12 files\n\n\tdone \xE2\x9C\x93\n \n");
  EXPECT_EQ(log(), (Texts{kConnecting, "  Fetching 12 files", "\tdone \xE2\x9C\x93", " "}));
}

TEST_F(Setup, LogsAProgressLineWithoutSpacesToo) {
  appear();
  print("12MB/100MB (12%)\n");
  EXPECT_EQ(view->downloadProgress(), 0.12);
  EXPECT_EQ(view->amountText(), "12 MB / 100 MB");
  EXPECT_EQ(log(), (Texts{kConnecting, "12MB/100MB (12%)"}));
}

TEST_F(Setup, LimitsTheBarToAHundredPercent) {
  appear();
  print("3100.55 MB / 3094.1 MB (100.2%)");
  EXPECT_EQ(view->downloadProgress(), 1.0);
  EXPECT_EQ(view->amountText(), "3100.55 MB / 3094.1 MB");
  EXPECT_EQ(view->downloadState(), State{Kind::downloading});
}

TEST_F(Setup, IgnoresAPercentageThatIsNotANumber) {
  appear();
  print(kProgress);
  const int before = changes;
  print("900 MB / 3094.1 MB (1.2.3%)\n");
  expectProgress();
  EXPECT_EQ(log(), Texts{kConnecting});  // it still looks like progress
  EXPECT_EQ(changes, before);
}

TEST_F(Setup, CopiesAmountsThatAreNotNumbers) {
  appear();
  print("1.2.3 MB / 4 MB (5%)\n");
  EXPECT_EQ(view->amountText(), "1.2.3 MB / 4 MB");
  EXPECT_EQ(view->downloadProgress(), 0.05);
}

TEST_F(Setup, FollowsProgressThatGoesBack) {
  appear();
  print("2 MB / 4 MB (50%)\n1 MB / 4 MB (25%)\n");
  EXPECT_EQ(view->downloadProgress(), 0.25);
}

TEST_F(Setup, TreatsCarriageReturnsAndAllOtherNewlinesAsLineEnds) {
  appear();
  print(
      "1 MB / 4 MB (25%)\rone\r2 MB / 4 MB (50%)\rtwo\r\nthree\xE2\x80\xA8"
      "four\xC2\x85"
      "five");
  EXPECT_EQ(view->amountText(), "2 MB / 4 MB");
  EXPECT_EQ(log(), (Texts{kConnecting, "one", "two", "three", "four", "five"}));
}

TEST_F(Setup, TreatsALineCutByReadsAsTwoLines) {
  appear();
  print("Verif");
  print("ying\n1 MB / 2 M");
  print("B (50%)\n");
  EXPECT_EQ(log(), (Texts{kConnecting, "Verif", "ying", "B (50%)"}));
  EXPECT_EQ(view->downloadedMB(), "");
}

TEST_F(Setup, DropsAChunkThatIsNotValidUtf8) {
  appear();
  print("good\n1 MB / 2 MB (50%)\ncaf\xE9\n");
  EXPECT_EQ(log(), Texts{kConnecting});
  EXPECT_EQ(view->downloadedMB(), "");
  EXPECT_EQ(changes, 1);
  print("next\n");
  EXPECT_EQ(log(), (Texts{kConnecting, "next"}));
}

TEST_F(Setup, NotifiesItsWindowOncePerChunk) {
  appear();
  std::string chunk;
  for (int i = 0; i < 1000; ++i) chunk += "line\n1 MB / 2 MB (50%)\r";
  print(chunk);
  EXPECT_EQ(log().size(), 1001U);
  EXPECT_EQ(changes, 2);
  print("\n\r\n");  // empty lines
  EXPECT_EQ(changes, 2);
}

TEST_F(Setup, HandlesOutputInOrderOnTheMainThread) {
  appear();
  launcher.last().print("one\n");
  launcher.last().print("two\n");
  launcher.last().exit(0);
  time.sleepFor(10s);  // the main thread is busy
  EXPECT_EQ(log(), Texts{kConnecting});
  time.runPosted();
  EXPECT_EQ(log(), (Texts{kConnecting, "one", "two", "Done!"}));
}

TEST_F(Setup, KeepsALogOfAnyLength) {
  appear();
  for (int i = 0; i < 200; ++i) {
    std::string chunk;
    for (int line = 0; line < 1000; ++line) chunk += "Fetching another piece of the model\n";
    launcher.last().print(chunk);
  }
  time.runPosted();
  EXPECT_EQ(log().size(), 200'001U);
  EXPECT_EQ(log().front(), kConnecting);
  EXPECT_EQ(changes, 201);
}

// The end

TEST_F(Setup, ReportsCompletionOneSecondAfterSuccess) {
  appear();
  print("Saved");
  exit(0);
  EXPECT_EQ(view->downloadState(), State{Kind::success});
  EXPECT_EQ(view->downloadProgress(), 1.0);
  EXPECT_EQ(view->amountText(), " / ");
  EXPECT_EQ(log(), (Texts{kConnecting, "Saved", "Done!"}));
  EXPECT_EQ(changes, 3);
  time.advance(999ms);
  EXPECT_EQ(completions, 0);
  time.advance(1ms);
  EXPECT_EQ(completions, 1);
  time.advance(60s);
  EXPECT_EQ(completions, 1);
  EXPECT_EQ(skips, 0);
}

TEST_F(Setup, KeepsTheLastAmountAfterASuccess) {
  appear();
  print(kProgress);
  exit(0);
  EXPECT_EQ(view->amountText(), "812.4 MB / 3094.1 MB");
  EXPECT_EQ(view->downloadProgress(), 1.0);
}

TEST_F(Setup, KeepsLogAndProgressAfterAFailure) {
  appear();
  print(kProgress);
  print("no route to host\n");
  exit(3);
  EXPECT_EQ(view->downloadState(),
            failed("Setup failed (exit code 3). Check internet connection."));
  expectProgress();
  EXPECT_EQ(log(), (Texts{kConnecting, "no route to host"}));
  time.advance(60s);
  EXPECT_EQ(completions, 0);
}

TEST_F(Setup, TreatsEveryStatusButZeroAsAFailure) {
  for (const int status : {1, 9, 15, 255, -1}) {
    DownloadFixture download;
    download.appear();
    download.exit(status);
    EXPECT_EQ(download.view->downloadState(),
              failed("Setup failed (exit code " + std::to_string(status) +
                     "). Check internet connection."));
  }
}

TEST_F(Setup, HandlesASetupThatEndsBeforeItsStartReturns) {
  launcher.onStarted = [](testing::FakeChild& child) {
    child.print("quick\n");
    child.exit(0);
  };
  appear();
  EXPECT_EQ(log(), (Texts{kConnecting, "quick", "Done!"}));
  EXPECT_EQ(launcher.children.front().use_count(), 1);  // the view has released it
  time.advance(1s);
  EXPECT_EQ(completions, 1);
}

}  // namespace
}  // namespace voxtrel
