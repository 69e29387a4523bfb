#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "support/DownloadFixture.h"
#include "voxtrel/download/ModelDownloadView.h"

namespace voxtrel {
namespace {

using namespace std::chrono_literals;
using testing::DownloadFixture;
using State = DownloadFixture::State;
using Kind = State::Kind;
using Texts = std::vector<std::string>;

constexpr const char* kConnecting = "Connecting to HuggingFace...";
constexpr const char* kProgress = "812.4 MB / 3094.1 MB (26.3%)\n";

struct Download : ::testing::Test, DownloadFixture {
  /// The visible blocks and the usable buttons.
  Texts shown() const {
    Texts all;
    if (view->showsProgress()) all.emplace_back("progress");
    if (view->showsAmount()) all.emplace_back("amount");
    if (view->showsLog()) all.emplace_back("log");
    if (view->showsError()) all.emplace_back("error");
    if (view->skipIsEnabled()) all.emplace_back("skip");
    if (view->showsRetry()) all.emplace_back("retry");
    return all;
  }
};

// What each state shows

TEST_F(Download, IsReadyUntilItsWindowAppears) {
  EXPECT_EQ(view->downloadState(), State{Kind::ready});
  EXPECT_EQ(shown(), Texts{"skip"});
  time.advance(60s);
  EXPECT_EQ(changes, 0);
  EXPECT_TRUE(launcher.startedAt.empty());
  EXPECT_TRUE(bundle.askedFor.empty());
}

TEST_F(Download, ShowsAnEmptyBarAndNoAmountAtFirst) {
  view->appeared();
  EXPECT_EQ(view->downloadState(), State{Kind::downloading});
  EXPECT_EQ(shown(), (Texts{"progress", "log"}));
  EXPECT_EQ(changes, 1);
  expectReset();
}

TEST_F(Download, ShowsTheAmountAfterTheFirstProgressLine) {
  appear();
  print(kProgress);
  EXPECT_EQ(shown(), (Texts{"progress", "amount", "log"}));
  EXPECT_EQ(view->amountText(), "812.4 MB / 3094.1 MB");
}

TEST_F(Download, ShowsAFullBarAfterASuccess) {
  appear();
  exit(0);
  EXPECT_EQ(shown(), (Texts{"progress", "log", "skip"}));
  EXPECT_EQ(view->downloadProgress(), 1.0);
}

TEST_F(Download, HidesTheProgressAfterAFailure) {
  appear();
  print(kProgress);
  exit(1);
  EXPECT_EQ(shown(), (Texts{"log", "error", "skip", "retry"}));
}

TEST_F(Download, HasItsTexts) {
  EXPECT_EQ(ModelDownloadView::kTitle, "Voxtrel — Model Setup");
  EXPECT_EQ(ModelDownloadView::kDescription, "Downloading Whisper Large v3 (~3 GB)");
  EXPECT_EQ(ModelDownloadView::kErrorHint, "Check your internet connection and try again.");
  EXPECT_EQ(ModelDownloadView::kSkipTitle, "Skip (won't work without model)");
  EXPECT_EQ(ModelDownloadView::kRetryTitle, "Retry");
}

TEST_F(Download, HasItsSizes) {
  EXPECT_EQ(ModelDownloadView::kWidthPt, 420);
  EXPECT_EQ(ModelDownloadView::kHeightPt, 320);
  EXPECT_EQ(ModelDownloadView::kPaddingPt, 24);
  EXPECT_EQ(ModelDownloadView::kSpacingPt, 16);
  EXPECT_EQ(ModelDownloadView::kProgressSpacingPt, 8);
  EXPECT_EQ(ModelDownloadView::kProgressSidePaddingPt, 8);
  EXPECT_EQ(ModelDownloadView::kLogHeightPt, 80);
  EXPECT_EQ(ModelDownloadView::kLogLineSpacingPt, 2);
  EXPECT_EQ(ModelDownloadView::kLogCornerRadiusPt, 4);
}

// Skip and retry

TEST_F(Download, IgnoresSkipWhileItDownloads) {
  view->skip();
  EXPECT_EQ(skips, 1);  // ready
  appear();
  view->skip();
  EXPECT_EQ(skips, 1);
  exit(1);
  view->skip();
  EXPECT_EQ(skips, 2);
  EXPECT_EQ(completions, 0);
}

TEST_F(Download, CompletesAfterASkipInItsLastSecond) {
  appear();
  exit(0);
  time.advance(500ms);
  view->skip();
  EXPECT_EQ(skips, 1);
  EXPECT_EQ(completions, 0);
  time.advance(500ms);
  EXPECT_EQ(completions, 1);
}

TEST_F(Download, RetriesOnlyAfterAFailure) {
  view->retry();
  appear();
  view->retry();
  time.runPosted();
  EXPECT_EQ(launcher.startedAt.size(), 1U);
  exit(0);
  view->retry();
  time.runPosted();
  EXPECT_EQ(launcher.startedAt.size(), 1U);
  EXPECT_EQ(view->downloadState(), State{Kind::success});
}

TEST_F(Download, StartsOverOnRetry) {
  appear();
  print(std::string(kProgress) + "broken\n");
  exit(1);
  view->retry();
  EXPECT_EQ(view->downloadState(), State{Kind::downloading});
  expectReset();
  time.runPosted();
  EXPECT_EQ(launcher.startedAt.size(), 2U);
  print("better\n");
  exit(0);
  EXPECT_EQ(log(), (Texts{kConnecting, "better", "Done!"}));
  time.advance(1s);
  EXPECT_EQ(completions, 1);
}

TEST_F(Download, LooksForTheEngineAgainOnRetry) {
  bundle.engine = "/nonexistent/quillback";
  appear();
  EXPECT_TRUE(view->showsRetry());
  bundle.engine = "/bin/sh";
  view->retry();
  time.runPosted();
  EXPECT_EQ(launcher.startedAt.size(), 1U);
  EXPECT_EQ(bundle.askedFor.size(), 2U);
}

TEST_F(Download, RetriesALaunchThatFailed) {
  launcher.failure = "no";
  appear();
  launcher.failure.reset();
  view->retry();
  time.runPosted();
  exit(0);
  EXPECT_EQ(view->downloadState(), State{Kind::success});
}

// Lifetime

TEST_F(Download, RunsToItsEndWithoutItsWindow) {
  const std::weak_ptr<ModelDownloadView> watch = view;
  appear();
  view->setOnChange(nullptr);
  view = nullptr;
  EXPECT_FALSE(watch.expired());
  EXPECT_EQ(launcher.last().kills, 0);
  EXPECT_EQ(launcher.last().terminations, 0);
  print("on it\n");
  EXPECT_EQ(watch.lock()->logLines(), (Texts{kConnecting, "on it"}));
  exit(0);
  EXPECT_FALSE(watch.expired());
  time.advance(1s);
  EXPECT_EQ(completions, 1);
  EXPECT_TRUE(watch.expired());
}

TEST_F(Download, IsReleasedAfterAFailureWithoutItsWindow) {
  const std::weak_ptr<ModelDownloadView> watch = view;
  appear();
  view = nullptr;
  exit(1);
  EXPECT_TRUE(watch.expired());
}

TEST_F(Download, IsReleasedAfterAFailedLaunchWithoutItsWindow) {
  const std::weak_ptr<ModelDownloadView> watch = view;
  launcher.failure = "no";
  view->appeared();
  view = nullptr;
  EXPECT_FALSE(watch.expired());
  time.runPosted();
  EXPECT_TRUE(watch.expired());
}

TEST_F(Download, HoldsItsSetupUntilItsEndIsHandled) {
  appear();
  EXPECT_EQ(launcher.children.front().use_count(), 2);
  launcher.last().exit(0);
  EXPECT_EQ(launcher.children.front().use_count(), 2);
  time.runPosted();
  EXPECT_EQ(launcher.children.front().use_count(), 1);
}

TEST_F(Download, MayBeReleasedByItsOwnCallbacks) {
  std::shared_ptr<ModelDownloadView> last;
  int called = 0;
  const auto release = [&last, &called, text = std::string(100, 'x')] {
    last = nullptr;
    called += text.size() == 100 ? 1 : 0;
  };
  const ModelDownloadPorts ports{bundle, time, launcher, time};
  last = ModelDownloadView::create(ports, {}, {release, release});
  last->skip();
  EXPECT_EQ(called, 1);
  last = ModelDownloadView::create(ports, {}, {release, release});
  last->setOnChange(release);
  last->appeared();
  EXPECT_EQ(called, 2);
  time.runPosted();
  exit(0);
  EXPECT_EQ(called, 3);
  time.advance(1s);
  EXPECT_EQ(called, 4);
}

TEST_F(Download, WorksWithoutCallbacks) {
  view = ModelDownloadView::create({bundle, time, launcher, time}, {}, {});
  view->skip();
  appear();
  exit(0);
  time.advance(1s);
  EXPECT_EQ(view->downloadState(), State{Kind::success});
}

}  // namespace
}  // namespace voxtrel
