#include <gtest/gtest.h>

#include "support/EngineFixture.h"

namespace voxtrel {
namespace {

using namespace std::chrono_literals;
using testing::EngineFixture;
using States = std::vector<AppState>;

struct EngineOutput : ::testing::Test {
  EngineOutput() {
    bench.manager->launch();
    bench.time.runPosted();
    bench.heard.clear();
  }
  EngineFixture bench;
};

TEST_F(EngineOutput, SetsTheStatesInTheOrderOfTheLines) {
  bench.print("Ready.\nRecording...\nProcessing 2.3s audio\nencode=12ms\n");
  EXPECT_EQ(bench.heard,
            (States{AppState::idle, AppState::recording, AppState::processing, AppState::idle}));
}

TEST_F(EngineOutput, ErrorLineIsKeptWholeAndChangesNoState) {
  bench.print("  [quillback] ERROR: no model \n");
  EXPECT_EQ(bench.manager->lastError(), "  [quillback] ERROR: no model ");
  EXPECT_TRUE(bench.heard.empty());
  bench.print("Ready.\n");
  EXPECT_EQ(bench.manager->lastError(), "  [quillback] ERROR: no model ");
}

TEST_F(EngineOutput, OneLineCanSetStateAndError) {
  bench.print("Ready. Accessibility is missing\n");
  EXPECT_EQ(bench.heard, States{AppState::idle});
  EXPECT_EQ(bench.manager->lastError(), "Ready. Accessibility is missing");
}

TEST_F(EngineOutput, TranscriptionIsStoredWithoutANotification) {
  bench.print("[gpu-decode] text: \"she said \"hi\" & left_now\"\n");
  EXPECT_EQ(bench.manager->lastText(), "she said \"hi\" & left_now");
  EXPECT_TRUE(bench.heard.empty());
  bench.print("[gpu-decode] text: \"\"\n");
  EXPECT_EQ(bench.manager->lastText(), "");
}

TEST_F(EngineOutput, ChunkThatIsNotUtf8IsDroppedWhole) {
  bench.print("Ready.\n\xff\n");
  EXPECT_TRUE(bench.heard.empty());
  bench.print("Ready.\n");
  EXPECT_EQ(bench.heard, States{AppState::idle});
}

TEST_F(EngineOutput, MarkerCutBetweenTwoReadsIsMissed) {
  bench.print("Rea");
  bench.print("dy.\n");
  EXPECT_TRUE(bench.heard.empty());
}

TEST_F(EngineOutput, IsLoggedLineByLineAtDebugLevelOnly) {
  bench.print("one\n\n two \r\nReady.\n");
  EXPECT_TRUE(bench.log.entries.empty());
  bench.log.debugEnabled = true;
  bench.print("one\n\n two \r\nReady.\n");
  std::vector<std::string> lines;
  for (const auto& entry : bench.log.entries) {
    EXPECT_EQ(entry.level, LogLevel::debug);
    EXPECT_EQ(entry.category, "process");
    lines.push_back(entry.message);
  }
  EXPECT_EQ(lines, (std::vector<std::string>{"one", " two ", "Ready."}));
  EXPECT_EQ(bench.heard, (States{AppState::idle, AppState::idle}));
}

TEST_F(EngineOutput, OfAStoppedEngineIsNotEvenLogged) {
  bench.log.debugEnabled = true;
  bench.manager->stopAndWait(3s);
  bench.print("Ready.\n");
  EXPECT_TRUE(bench.log.entries.empty());
  EXPECT_TRUE(bench.heard.empty());
}

TEST_F(EngineOutput, BeingReadWhileTheEngineIsStoppedIsReadToItsEnd) {
  bench.launcher.last().options.onOutput("Ready.\n");
  bench.log.debugEnabled = true;
  // The log is asked for each line; a stop arrives between two lines of one chunk.
  struct StoppingLog : testing::FakeLog {
    void write(LogLevel level, std::string_view category, std::string_view message) override {
      FakeLog::write(level, category, message);
      if (message == "first") onFirst();
    }
    std::function<void()> onFirst;
  } log;
  log.debugEnabled = true;
  ProcessManagerPorts ports{bench.bundle, bench.time, bench.launcher,     bench.time,
                            log,          bench.time, bench.notifications};
  const auto manager = std::make_shared<ProcessManager>(ports);
  manager->launch();
  log.onFirst = [&] { manager->stopAndWait(3s); };
  bench.launcher.last().print("first\n[gpu-decode] text: \"last words\"\n");
  EXPECT_EQ(manager->lastText(), "last words");

  manager->launch();
  log.onFirst = [&] { manager->launch(); };
  bench.launcher.last().print("first\n[quillback] ERROR old\nReady.\n");
  EXPECT_EQ(manager->lastError(), "");
  EXPECT_EQ(manager->state(), AppState::loading);
}

}  // namespace
}  // namespace voxtrel
