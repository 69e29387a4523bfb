#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <filesystem>
#include <optional>

#include "support/ScratchFolder.h"
#include "voxtrel/platform/linux/permissions/EngineCheck.h"

namespace voxtrel {
namespace {

namespace fs = std::filesystem;

/// Engines that are shell scripts.
struct EngineCheckFixture : ::testing::Test {
  void install(const std::string& script) const {
    const auto engine = folder.write("quillback", "#!/bin/sh\n" + script);
    fs::permissions(engine, fs::perms::owner_all);
  }
  void ask() {
    answer.reset();
    check.ask([this](const KeyAnswer& newAnswer) { answer = newAnswer; });
  }
  bool hasAnswer(int limitMs = 10000) const {
    QElapsedTimer timer;
    timer.start();
    while (!answer && timer.elapsed() < limitMs) {
      QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 20);
    }
    return answer.has_value();
  }

  int argc = 1;
  char name[5] = "test";
  char* argv[2] = {name, nullptr};
  QCoreApplication application{argc, argv};
  ScratchFolder folder;
  std::optional<KeyAnswer> answer;
  EngineCheck check{[this] { return (folder.path() / "quillback").string(); }};
};

TEST_F(EngineCheckFixture, theFirstAnswerComesAtOnceAndLaterOnesLater) {
  install("[ \"$*\" = check ] || exit 7\necho 'key: no, it is hidden'\necho other >&2\nexit 1\n");
  ask();
  ASSERT_TRUE(answer);
  EXPECT_FALSE(answer->isSeen);
  EXPECT_EQ(answer->reason, "it is hidden");
  install("exit 0\n");
  ask();
  EXPECT_FALSE(answer);
  ASSERT_TRUE(hasAnswer());
  EXPECT_TRUE(answer->isSeen);
}

TEST_F(EngineCheckFixture, anEngineThatCannotBeStartedSaysItselfWhatIsWrong) {
  ask();
  ASSERT_TRUE(hasAnswer());
  EXPECT_TRUE(answer->isSeen);
  install("exit 1\n");
  ask();
  ASSERT_TRUE(hasAnswer());
  EXPECT_FALSE(answer->isSeen);
}

TEST_F(EngineCheckFixture, anEngineThatDoesNotEndIsEndedAndCountsAsSeeing) {
  install("exec sleep 100\n");
  QElapsedTimer timer;
  timer.start();
  ask();
  EXPECT_LT(timer.elapsed(), 2500) << "the main thread was kept";
  EXPECT_FALSE(answer);
  ASSERT_TRUE(hasAnswer());
  EXPECT_TRUE(answer->isSeen);
  EXPECT_GE(timer.elapsed(), 5500);
}

}  // namespace
}  // namespace voxtrel
