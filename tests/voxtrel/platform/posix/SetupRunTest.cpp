#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "support/ScratchFolder.h"
#include "voxtrel/download/ModelDownloadView.h"
#include "voxtrel/platform/posix/Supervision.h"
#include "voxtrel/platform/posix/Waiting.h"

namespace voxtrel {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using Kind = ModelDownloadView::DownloadState::Kind;
using Texts = std::vector<std::string>;

constexpr const char* kConnecting = "Connecting to HuggingFace...";

/// Keeps delayed tasks; the test runs them.
class DelayingMainLoop : public TestMainLoop {
 public:
  void postAfter(std::chrono::milliseconds delay, Task task) override {
    delayed.emplace_back(delay, std::move(task));
  }
  std::vector<std::pair<std::chrono::milliseconds, Task>> delayed;
};

/// The download over the real adapters, with a scripted engine in a temporary folder.
class SetupRun : public ::testing::Test {
 protected:
  SetupRun() {
    fs::copy_file(SCRIPTED_ENGINE, engine());
    view_->setOnChange([this] {
      ++changes_;
      EXPECT_EQ(std::this_thread::get_id(), testThread_);
    });
  }

  std::string engine() const { return folder_.path() / "quillback"; }
  void script(const std::string& commands) const {
    folder_.write("quillback.setup.script", commands);
  }

  bool runUntilEnded() {
    return mainLoop_.runUntil([this] { return view_->downloadState().kind != Kind::downloading; });
  }
  /// Shows the window and waits until the run ends.
  void run() {
    view_->appeared();
    ASSERT_TRUE(runUntilEnded());
  }
  void run(const std::string& commands) {
    script(commands);
    run();
  }
  void expectSuccess() {
    EXPECT_EQ(view_->downloadState().kind, Kind::success);
    EXPECT_EQ(view_->logLines().back(), "Done!");
    EXPECT_EQ(view_->downloadProgress(), 1.0);
    ASSERT_EQ(mainLoop_.delayed.size(), 1U);
    EXPECT_EQ(mainLoop_.delayed[0].first, 1s);
    EXPECT_EQ(completions_, 0);
    mainLoop_.delayed[0].second();
    EXPECT_EQ(completions_, 1);
  }
  void expectError(const std::string& message) const {
    EXPECT_EQ(view_->downloadState().kind, Kind::error);
    EXPECT_EQ(view_->downloadState().message, message);
    EXPECT_TRUE(mainLoop_.delayed.empty());
  }

  const std::thread::id testThread_ = std::this_thread::get_id();
  ScratchFolder folder_{};
  ExecutableFolder bundle_{(folder_.path() / "voxtrel").string()};
  int completions_ = 0, changes_ = 0;
  DelayingMainLoop mainLoop_;
  PosixChildProcessLauncher launcher_;
  ThreadedBackgroundQueue backgroundQueue_;
  std::shared_ptr<ModelDownloadView> view_ =
      ModelDownloadView::create({.bundle = bundle_,
                                 .backgroundQueue = backgroundQueue_,
                                 .childProcesses = launcher_,
                                 .mainLoop = mainLoop_},
                                {}, {[this] { ++completions_; }, nullptr});
};

TEST_F(SetupRun, ShowsTheEnginesProgressUpToItsEnd) {
  run();  // what the scripted engine does without commands
  EXPECT_EQ(view_->logLines(),
            (Texts{kConnecting, "Downloading whisper-large-v3", "Verifying", "Saved", "Done!"}));
  EXPECT_EQ(view_->amountText(), "3094.0 MB / 3094.0 MB");
  expectSuccess();
}

TEST_F(SetupRun, MovesTheBarWhileTheEngineIsAtIt) {
  script("progress 812 3094\nwait-for " + (folder_.path() / "go").string() + "\nexit 0\n");
  view_->appeared();
  EXPECT_TRUE(mainLoop_.runUntil([this] { return view_->showsAmount(); }));
  EXPECT_EQ(view_->amountText(), "812.0 MB / 3094.0 MB");
  EXPECT_DOUBLE_EQ(view_->downloadProgress(), 0.262);
  EXPECT_EQ(view_->downloadState().kind, Kind::downloading);
  folder_.write("go", "");
  ASSERT_TRUE(runUntilEnded());
  expectSuccess();
}

TEST_F(SetupRun, StartsTheEngineInItsOwnFolderWithTheThreeWords) {
  run("report\nexit 0\n");
  Texts told;  // of arguments and folder
  for (const std::string& line : view_->logLines()) {
    if (line.starts_with("argument: ") || line.starts_with("directory: ")) told.push_back(line);
  }
  EXPECT_EQ(told,
            (Texts{"argument: " + engine(), "argument: setup", "argument: --model",
                   "argument: large-v3", "directory: " + fs::canonical(folder_.path()).string()}));
}

TEST_F(SetupRun, FailsWithTheEnginesExitCode) {
  run("print no route to host\nexit 3\n");
  expectError("Setup failed (exit code 3). Check internet connection.");
  EXPECT_EQ(view_->logLines(), (Texts{kConnecting, "no route to host"}));
}

TEST_F(SetupRun, FailsWithTheNumberOfASignal) {
  run("signal KILL\n");
  expectError("Setup failed (exit code 9). Check internet connection.");
}

TEST_F(SetupRun, SplitsAtCarriageReturnsAlone) {
  run("write 1 MB / 4 MB (25%)\\rone\\r2 MB / 4 MB (50%)\\rtwo\\r\nexit 0\n");
  EXPECT_EQ(view_->logLines(), (Texts{kConnecting, "one", "two", "Done!"}));
  EXPECT_EQ(view_->amountText(), "2 MB / 4 MB");
  expectSuccess();
}

TEST_F(SetupRun, SplitsAtCarriageReturnsWithLineFeeds) {
  run("write one\\r\\n\\r\\ntwo\\r\\n\nexit 0\n");
  EXPECT_EQ(view_->logLines(), (Texts{kConnecting, "one", "two", "Done!"}));
}

TEST_F(SetupRun, ShowsBothStreamsInOneLog) {
  run("print one\nerror two\nprint three\nexit 0\n");
  EXPECT_EQ(view_->logLines(), (Texts{kConnecting, "one", "two", "three", "Done!"}));
}

TEST_F(SetupRun, MakesTwoPiecesOfALineWrittenInTwo) {
  const std::string go = (folder_.path() / "go").string();
  script("write Verif\nwait-for " + go + "\nwrite ying\nexit 0\n");
  view_->appeared();
  EXPECT_TRUE(mainLoop_.runUntil([this] { return view_->logLines().size() == 2; }));
  folder_.write("go", "");
  ASSERT_TRUE(runUntilEnded());
  EXPECT_EQ(view_->logLines(), (Texts{kConnecting, "Verif", "ying", "Done!"}));
}

TEST_F(SetupRun, DropsAChunkThatIsNotUtf8) {
  const std::string go = (folder_.path() / "go").string();
  std::string commands = "print good\nwait-for " + go + "\nwrite bad\\xE9\\n\n";
  for (int i = 0; i < 20; ++i)
    commands += "sleep 10\nprint again\n";  // the first may arrive with it
  script(commands + "exit 0\n");
  view_->appeared();
  EXPECT_TRUE(mainLoop_.runUntil([this] { return view_->logLines().size() == 2; }));
  folder_.write("go", "");
  ASSERT_TRUE(runUntilEnded());
  const Texts& log = view_->logLines();
  ASSERT_GT(log.size(), 3U);
  EXPECT_EQ(log[1], "good");
  EXPECT_EQ(std::ranges::count(log, "again"), static_cast<std::ptrdiff_t>(log.size()) - 3);
}

TEST_F(SetupRun, LogsAHundredThousandLinesBeforeItIsDone) {
  run("repeat 100k Fetching another piece of the model\nprint last words\nexit 0\n");
  const Texts& log = view_->logLines();
  // A read may end within a line, which splits the line in two.
  EXPECT_GE(log.size(), 100'003U);
  EXPECT_EQ(log[log.size() - 2], "last words");
  std::string all;
  for (const auto& line : log) all += line;
  EXPECT_EQ(all.size(), std::string(kConnecting).size() + 100'000 * 35 + 10 + 5);
  EXPECT_LT(static_cast<std::size_t>(changes_), log.size());  // at most one per read
  expectSuccess();
}

TEST_F(SetupRun, ReadsTheLastLinesOfAnEngineThatFails) {
  run("flood 300k\nprint last words\nexit 1\n");
  EXPECT_EQ(view_->logLines().back(), "last words");
  expectError("Setup failed (exit code 1). Check internet connection.");
}

TEST_F(SetupRun, EndsThoughAGrandchildHoldsTheOutput) {
  run("grandchild 5000\nprint left one behind\nexit 0\n");
  EXPECT_EQ(view_->logLines(), (Texts{kConnecting, "left one behind", "Done!"}));
}

TEST_F(SetupRun, NamesTheEngineThatIsMissing) {
  fs::remove(engine());
  view_->appeared();
  if (fs::exists("/usr/local/bin/quillback")) GTEST_SKIP() << "there is one in the usual place";
  expectError("quillback binary not found at /usr/local/bin/quillback");
}

TEST_F(SetupRun, SaysWhyTheEngineCannotBeLaunched) {
  // The bundle offers only programs that can run, so this one comes from elsewhere.
  struct Fixed : ApplicationBundle {
    std::optional<std::string> auxiliaryExecutable(std::string_view) const override { return path; }
    std::string path;
  } bundle;
  bundle.path = folder_.write("program", "no program").string();
  const auto view =
      ModelDownloadView::create({bundle, backgroundQueue_, launcher_, mainLoop_}, {}, {});
  const auto run = [&] {
    view->showsRetry() ? view->retry() : view->appeared();
    ASSERT_TRUE(mainLoop_.runUntil([&] { return view->showsError(); }));
  };
  run();
  EXPECT_EQ(view->downloadState().message,
            "Failed to launch: Cannot start " + bundle.path + ": Permission denied");
  fs::permissions(bundle.path, fs::perms::owner_all);
  run();
  EXPECT_EQ(view->downloadState().message,
            "Failed to launch: Cannot start " + bundle.path + ": Exec format error");
  EXPECT_EQ(view->logLines(), Texts{kConnecting});
}

TEST_F(SetupRun, SucceedsOnRetry) {
  run("print first\nexit 1\n");
  script("print second\nexit 0\n");
  view_->retry();
  ASSERT_TRUE(runUntilEnded());
  EXPECT_EQ(view_->logLines(), (Texts{kConnecting, "second", "Done!"}));
  expectSuccess();
}

TEST_F(SetupRun, ContinuesWithoutItsWindowAndLeavesNothingBehind) {
  script("print at work\nwait-for " + (folder_.path() / "go").string() + "\nprint more\nexit 0\n");
  view_->appeared();
  EXPECT_TRUE(mainLoop_.runUntil([this] { return view_->logLines().size() == 2; }));
  const std::weak_ptr<ModelDownloadView> watch = view_;
  view_->setOnChange(nullptr);
  view_ = nullptr;
  folder_.write("go", "");
  EXPECT_TRUE(mainLoop_.runUntil([this] { return !mainLoop_.delayed.empty(); }));
  mainLoop_.delayed[0].second();
  mainLoop_.delayed.clear();
  EXPECT_EQ(completions_, 1);
  // The task that adopts the child may not have run yet.
  EXPECT_TRUE(mainLoop_.runUntil([&watch] { return watch.expired(); }));
}

TEST_F(SetupRun, EndsWithTheApplication) {
  script("log began\nignore-term\nwait\n");
  view_->appeared();
  view_->setOnChange(nullptr);
  const std::string log = engine() + ".setup.log";
  EXPECT_TRUE(eventually([&log] { return fs::exists(log); }));
  view_ = nullptr;  // the adapters' destructors wait for the child's end
}

}  // namespace
}  // namespace voxtrel
