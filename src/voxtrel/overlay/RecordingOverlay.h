#pragma once

#include <memory>
#include <string>

#include "voxtrel/overlay/FFTBarView.h"
#include "voxtrel/platform/Log.h"
#include "voxtrel/platform/Microphone.h"
#include "voxtrel/platform/OverlayStage.h"
#include "voxtrel/platform/RecordingIndicator.h"
#include "voxtrel/platform/Scheduling.h"
#include "voxtrel/platform/Subscription.h"
#include "voxtrel/platform/VectorMath.h"

namespace voxtrel {

/// The ports that the overlay uses.
struct OverlayPorts {
  OverlayStage& stage;
  Microphone& microphone;
  FrameTimer& frameTimer;
  MainLoop& mainLoop;
  Log& log;
  const VectorMath& vectorMath;
};

/// The small pill that floats above all windows while the engine records; its bars follow the voice.
/// There is one for the whole application.
/// Thread: the main thread.  Owns: window, bar view, capture and timer, while shown.
/// Borrows: all of OverlayPorts (must outlive this).
/// Fails by: bars at rest and one line in the log; a fatal error if there is no screen.
class RecordingOverlay final : public RecordingIndicator {
 public:
  explicit RecordingOverlay(const OverlayPorts& ports);
  RecordingOverlay(const RecordingOverlay&) = delete;
  RecordingOverlay& operator=(const RecordingOverlay&) = delete;
  ~RecordingOverlay() override;

  /// Opens the microphone without waiting for it.
  void show() override;
  /// Closes the microphone before it returns.
  void hide() override;

 private:
  Rect contentRect();
  void makeWindow();
  void startAudio();
  void audioFailed();
  void startRefreshTimer();
  void stopAudio();

  const OverlayPorts ports_;
  Logger logger_;
  std::unique_ptr<OverlayWindow> window_;
  std::shared_ptr<FFTBarView> barView_;  // callbacks hold it weakly
  std::unique_ptr<MicrophoneTap> audioEngine_;
  Subscription refreshTimer_;
  bool isShowing_ = false;
};

}  // namespace voxtrel
