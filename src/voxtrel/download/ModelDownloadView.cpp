#include "voxtrel/download/ModelDownloadView.h"

#include <chrono>
#include <filesystem>
#include <utility>

#include "common/base/Lines.h"
#include "common/base/Utf8.h"
#include "voxtrel/download/SetupOutput.h"
#include "voxtrel/platform/ChildProcess.h"
#include "voxtrel/platform/Scheduling.h"
#include "voxtrel/supervisor/EngineLocation.h"

namespace voxtrel {
namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds kCompletionDelay = 1s;
constexpr const char* kFirstLine = "Connecting to HuggingFace...";
constexpr const char* kLastLine = "Done!";

}  // namespace

/// One run of the engine's setup. The child's callbacks share it. It holds the view and the child until
/// the end is handled on the main thread.
/// Thread: the main thread; the child's threads read `view` until they report the end.
struct ModelDownloadView::Setup {
  MainLoop& mainLoop;
  ChildProcessLauncher& childProcesses;
  std::shared_ptr<ModelDownloadView> view;
  std::shared_ptr<ChildProcess> child = nullptr;

  std::shared_ptr<ModelDownloadView> end() {
    child = nullptr;
    return std::exchange(view, nullptr);
  }
};

ModelDownloadView::ModelDownloadView(const ModelDownloadPorts& ports, Callbacks callbacks)
    : ports_(ports), callbacks_(std::move(callbacks)) {}

std::shared_ptr<ModelDownloadView> ModelDownloadView::create(
    const ModelDownloadPorts& ports, const std::optional<std::string>& /*initialModel*/,
    Callbacks callbacks) {
  return std::shared_ptr<ModelDownloadView>(new ModelDownloadView(ports, std::move(callbacks)));
}

// What the window shows.

bool ModelDownloadView::showsProgress() const {
  return downloadState_.kind == DownloadState::Kind::downloading ||
         downloadState_.kind == DownloadState::Kind::success;
}

bool ModelDownloadView::showsAmount() const {
  return showsProgress() && !downloadedMB_.empty();
}

bool ModelDownloadView::showsLog() const {
  return !logLines_.empty();
}

bool ModelDownloadView::showsError() const {
  return downloadState_.kind == DownloadState::Kind::error;
}

bool ModelDownloadView::showsRetry() const {
  return showsError();
}

bool ModelDownloadView::skipIsEnabled() const {
  return downloadState_.kind != DownloadState::Kind::downloading;
}

std::string ModelDownloadView::amountText() const {
  return downloadedMB_ + " / " + totalMB_;
}

// What the user does.

void ModelDownloadView::appeared() {
  if (downloadState_.kind == DownloadState::Kind::ready) startDownload();
}

void ModelDownloadView::skip() {
  if (!skipIsEnabled() || !callbacks_.onSkip) return;
  const auto alive = shared_from_this();  // the callback may release the window
  callbacks_.onSkip();
}

void ModelDownloadView::retry() {
  if (showsRetry()) startDownload();
}

// The setup.

void ModelDownloadView::startDownload() {
  const auto alive = shared_from_this();
  downloadState_ = {DownloadState::Kind::downloading};
  downloadProgress_ = 0.0;
  downloadedMB_.clear();
  totalMB_.clear();
  logLines_ = {kFirstLine};
  const std::string path = binaryPath(ports_.bundle);
  if (!fileExists(path)) {
    fail("quillback binary not found at " + path);
    return;
  }
  const auto setup = std::make_shared<Setup>(Setup{ports_.mainLoop, ports_.childProcesses, alive});
  ports_.backgroundQueue.runAfter(0ms, [setup, path] { launch(setup, path); });
  changed();
}

/// Runs on a background thread, so it leaves the view to the main thread.
void ModelDownloadView::launch(const std::shared_ptr<Setup>& setup, const std::string& path) {
  ChildOptions options{
      .executable = path,
      .arguments = {"setup", "--model", "large-v3"},
      .workingDirectory = std::filesystem::path(path).parent_path().string(),
      .onOutput =
          [setup](std::string_view bytes) {
            if (!isValidUtf8(bytes)) return;
            setup->mainLoop.post(
                [view = setup->view, text = std::string(bytes)] { view->handleOutput(text); });
          },
      .onExit =
          [setup](int status) {
            setup->mainLoop.post([setup, status] { setup->end()->handleExit(status); });
          }};
  const auto result = setup->childProcesses.start(std::move(options));
  if (!result) {
    setup->mainLoop.post(
        [setup, message = "Failed to launch: " + result.error()] { setup->end()->fail(message); });
    return;
  }
  setup->mainLoop.post([setup, child = *result] {
    if (setup->view) setup->child = child;  // otherwise it has already ended
  });
}

void ModelDownloadView::handleOutput(std::string_view text) {
  bool hasChanged = false;
  forEachLine(text, [&](std::string_view line) { hasChanged |= handleLine(line); });
  if (hasChanged) changed();
}

/// Returns whether the line changed anything.
bool ModelDownloadView::handleLine(std::string_view line) {
  if (line.empty()) return false;
  auto progress = parseProgress(line);
  if (progress) {
    downloadedMB_ = std::move(progress->downloadedMB);
    totalMB_ = std::move(progress->totalMB);
    downloadProgress_ = progress->fraction;
  }
  const bool isNewLine = isLogged(line);
  if (isNewLine) logLines_.emplace_back(line);
  return progress || isNewLine;
}

void ModelDownloadView::handleExit(int status) {
  if (status != 0) {
    fail("Setup failed (exit code " + std::to_string(status) + "). Check internet connection.");
    return;
  }
  downloadProgress_ = 1.0;
  downloadState_ = {DownloadState::Kind::success};
  logLines_.emplace_back(kLastLine);
  ports_.mainLoop.postAfter(kCompletionDelay, [view = shared_from_this()] {
    if (view->callbacks_.onComplete) view->callbacks_.onComplete();
  });
  changed();
}

void ModelDownloadView::fail(std::string message) {
  downloadState_ = {DownloadState::Kind::error, std::move(message)};
  changed();
}

/// Calls a copy, because the callback may replace itself.
void ModelDownloadView::changed() const {
  if (const auto onChange = onChange_) onChange();
}

}  // namespace voxtrel
