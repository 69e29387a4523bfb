#include "voxtrel/overlay/RecordingOverlay.h"

#include <chrono>
#include <optional>
#include <utility>
#include <vector>

#include "common/base/Fatal.h"

namespace voxtrel {
namespace {

constexpr double kWidth = 90;
constexpr double kHeight = 21;
constexpr double kDistanceFromBottom = 90;
constexpr std::chrono::duration<double> kRefreshInterval(1.0 / 60.0);

}  // namespace

RecordingOverlay::RecordingOverlay(const OverlayPorts& ports)
    : ports_(ports), logger_(ports_.log, "audio") {}

RecordingOverlay::~RecordingOverlay() {
  RecordingOverlay::hide();
}

void RecordingOverlay::show() {
  if (isShowing_) return;
  isShowing_ = true;
  makeWindow();
  startAudio();
  startRefreshTimer();
}

void RecordingOverlay::hide() {
  if (!isShowing_) return;
  isShowing_ = false;
  refreshTimer_.reset();
  stopAudio();
  window_.reset();
  barView_.reset();
}

Rect RecordingOverlay::contentRect() {
  std::optional<Rect> screen = ports_.stage.mainScreenFrame();
  if (!screen) {
    const std::vector<Rect> frames = ports_.stage.screenFrames();
    if (frames.empty()) fatalError("there is no screen for the recording overlay");
    screen = frames.front();
  }
  return {screen->midX() - kWidth * 0.5, screen->y + kDistanceFromBottom, kWidth, kHeight};
}

void RecordingOverlay::makeWindow() {
  window_ = ports_.stage.makeWindow(contentRect());
  barView_ = std::make_shared<FFTBarView>(Rect{0, 0, kWidth, kHeight}, ports_.vectorMath);
  window_->setContent(barView_->cornerRadius(),
                      [weakView = std::weak_ptr(barView_)](Canvas& canvas) {
                        if (const auto view = weakView.lock()) view->draw(canvas);
                      });
  window_->orderFrontRegardless();
}

void RecordingOverlay::startAudio() {
  const std::weak_ptr<FFTBarView> weakView = barView_;
  MicrophoneTapOptions options;
  options.bufferSizeFrames = FFTBarView::kFftSize;
  options.onBuffer = [weakView](const AudioBuffer& buffer) {
    if (const auto view = weakView.lock()) view->processAudio(buffer);
  };
  options.onFailure = [this, weakView, logger = logger_,
                       &mainLoop = ports_.mainLoop](const std::string& description) {
    logger.error("Audio engine failed: " + description);
    mainLoop.post([this, weakView] {
      // The view dies with its showing, and before the overlay.
      if (!weakView.expired()) audioFailed();
    });
  };
  audioEngine_ = ports_.microphone.openTap(std::move(options));
}

void RecordingOverlay::audioFailed() {
  audioEngine_.reset();
  barView_->clear();  // else the bars would stay up
}

void RecordingOverlay::startRefreshTimer() {
  refreshTimer_ =
      ports_.frameTimer.everyFrame(kRefreshInterval, [this, weakView = std::weak_ptr(barView_)] {
        if (!weakView.expired()) window_->setNeedsDisplay();
      });
}

void RecordingOverlay::stopAudio() {
  audioEngine_.reset();
}

}  // namespace voxtrel
