#include <gtest/gtest.h>

#include "support/EngineFixture.h"

namespace voxtrel {
namespace {

using namespace std::chrono_literals;
using testing::EngineFixture;
using States = std::vector<AppState>;

struct EngineOutput : ::testing::Test {
  EngineOutput() {
    engine.manager->launch();
    engine.time.runPosted();
    engine.heard.clear();
  }
  EngineFixture engine;
};

TEST_F(EngineOutput, SetsTheStatesInTheOrderOfTheLines) {
  engine.print("Ready.\nRecording...\nProcessing 2.3s audio\nencode=12ms\n");
  EXPECT_EQ(engine.heard,
            (States{AppState::idle, AppState::recording, AppState::processing, AppState::idle}));
}

TEST_F(EngineOutput, ErrorLineIsKeptWholeAndChangesNoState) {
  engine.print("  [quillback] ERROR: no model \n");
  EXPECT_EQ(engine.manager->lastError(), "  [quillback] ERROR: no model ");
  EXPECT_TRUE(engine.heard.empty());
  engine.print("Ready.\n");
  EXPECT_EQ(engine.manager->lastError(), "  [quillback] ERROR: no model ");
}

TEST_F(EngineOutput, OneLineCanSetStateAndError) {
  engine.print("Ready. Accessibility is missing\n");
  EXPECT_EQ(engine.heard, States{AppState::idle});
  EXPECT_EQ(engine.manager->lastError(), "Ready. Accessibility is missing");
}

TEST_F(EngineOutput, TranscriptionIsStoredWithoutANotification) {
  engine.print("[gpu-decode] text: \"she said \"hi\" & left_now\"\n");
  EXPECT_EQ(engine.manager->lastText(), "she said \"hi\" & left_now");
  EXPECT_TRUE(engine.heard.empty());
  engine.print("[gpu-decode] text: \"\"\n");
  EXPECT_EQ(engine.manager->lastText(), "");
}

TEST_F(EngineOutput, ChunkThatIsNotUtf8IsDroppedWhole) {
  engine.print("Ready.\n\xff\n");
  EXPECT_TRUE(engine.heard.empty());
  engine.print("Ready.\n");
  EXPECT_EQ(engine.heard, States{AppState::idle});
}

TEST_F(EngineOutput, MarkerCutBetweenTwoReadsIsMissed) {
  engine.print("Rea");
  engine.print("dy.\n");
  EXPECT_TRUE(engine.heard.empty());
}

TEST_F(EngineOutput, IsLoggedLineByLineAtDebugLevelOnly) {
  engine.print("one\n\n two \r\nReady.\n");
  EXPECT_TRUE(engine.log.entries.empty());
  engine.log.debugEnabled = true;
  engine.print("one\n\n two \r\nReady.\n");
  std::vector<std::string> lines;
  for (const auto& entry : engine.log.entries) {
    EXPECT_EQ(entry.level, LogLevel::debug);
    EXPECT_EQ(entry.category, "process");
    lines.push_back(entry.message);
  }
  EXPECT_EQ(lines, (std::vector<std::string>{"one", " two ", "Ready."}));
  EXPECT_EQ(engine.heard, (States{AppState::idle, AppState::idle}));
}

TEST_F(EngineOutput, IsLoggedWithoutTheDictatedWordsUnlessTheyAreAskedFor) {
  const auto logged = [this] {
    engine.log.entries.clear();
    engine.print("[gpu-decode] text: \"my secret\"\nReady.\n");
    std::string all;
    for (const auto& entry : engine.log.entries) all += entry.message + "|";
    return all;
  };
  engine.log.debugEnabled = true;
  EXPECT_EQ(logged(), "[gpu-decode] text: \"…\"|Ready.|");
  EXPECT_EQ(engine.manager->lastText(), "my secret");
  engine.log.wordsKept = true;
  EXPECT_EQ(logged(), "[gpu-decode] text: \"my secret\"|Ready.|");
}

TEST_F(EngineOutput, HidesWordsThatFollowADroppedChunk) {
  engine.log.debugEnabled = true;
  engine.print("[gpu-decode] text: \"caf\xC3");
  engine.print("\xA9, my secret");
  engine.print(" and another\"\nReady.\n");
  for (const auto& entry : engine.log.entries) {
    EXPECT_EQ(entry.message.find("secret"), std::string::npos);
    EXPECT_EQ(entry.message.find("another"), std::string::npos);
  }
  ASSERT_FALSE(engine.log.entries.empty());
  EXPECT_EQ(engine.log.entries.back().message, "Ready.");
}

TEST_F(EngineOutput, OfAStoppedEngineIsNotEvenLogged) {
  engine.log.debugEnabled = true;
  engine.manager->stopAndWait(3s);
  engine.print("Ready.\n");
  EXPECT_TRUE(engine.log.entries.empty());
  EXPECT_TRUE(engine.heard.empty());
}

TEST_F(EngineOutput, BeingReadWhileTheEngineIsStoppedIsReadToItsEnd) {
  engine.launcher.last().options.onOutput("Ready.\n");
  engine.log.debugEnabled = true;
  // The log is asked for each line; a stop arrives between two lines of one chunk.
  struct StoppingLog : testing::FakeLog {
    void write(LogLevel level, std::string_view category, std::string_view message) override {
      FakeLog::write(level, category, message);
      if (message == "first") onFirst();
    }
    std::function<void()> onFirst;
  } log;
  log.debugEnabled = true;
  ProcessManagerPorts ports{engine.bundle, engine.time, engine.launcher,     engine.time,
                            log,           engine.time, engine.notifications};
  const auto manager = std::make_shared<ProcessManager>(ports);
  manager->launch();
  log.onFirst = [&] { manager->stopAndWait(3s); };
  engine.launcher.last().print("first\n[gpu-decode] text: \"last words\"\n");
  EXPECT_EQ(manager->lastText(), "last words");

  manager->launch();
  log.onFirst = [&] { manager->launch(); };
  engine.launcher.last().print("first\n[quillback] ERROR old\nReady.\n");
  EXPECT_EQ(manager->lastError(), "");
  EXPECT_EQ(manager->state(), AppState::loading);
}

}  // namespace
}  // namespace voxtrel
