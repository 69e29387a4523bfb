#pragma once

#include <functional>
#include <memory>
#include <string>

#include "voxtrel/overlay/FFTBarView.h"
#include "voxtrel/platform/FrameTimer.h"
#include "voxtrel/platform/Log.h"
#include "voxtrel/platform/Microphone.h"
#include "voxtrel/platform/OverlayStage.h"
#include "voxtrel/platform/RealFft.h"
#include "voxtrel/platform/Scheduling.h"
#include "voxtrel/platform/Subscription.h"

namespace voxtrel {

/// What the overlay needs from the desktop.
struct OverlayPorts {
  OverlayStage& stage;
  Microphone& microphone;
  FrameTimer& frameTimer;
  MainLoop& mainLoop;
  Log& log;
  std::function<std::unique_ptr<RealFft>()> makeFft;  ///< may give null
};

/// The small pill that floats above everything while the engine records, its bars moving with the
/// voice. There is one for the whole application.
/// Thread: the main thread.  Owns: window, bar view, capture and timer, while shown.
/// Borrows: all of OverlayPorts (must outlive this).
/// Fails by: bars at rest and one line in the log; a fatal error if there is no screen at all.
class RecordingOverlay {
 public:
  explicit RecordingOverlay(OverlayPorts ports);
  RecordingOverlay(const RecordingOverlay&) = delete;
  RecordingOverlay& operator=(const RecordingOverlay&) = delete;
  virtual ~RecordingOverlay();

  /// Nothing happens when it is shown already. Does not wait for the microphone.
  virtual void show();
  /// Nothing happens when it is hidden already. Afterwards the microphone is closed.
  virtual void hide();

 private:
  Rect contentRect();
  void makeWindow();
  void startAudio();
  void audioFailed(FFTBarView& view);
  void startRefreshTimer();
  void stopAudio();

  OverlayPorts ports_;
  Logger logger_;
  std::unique_ptr<OverlayWindow> window_;
  std::shared_ptr<FFTBarView> barView_;  // shared with nobody for longer than a call
  std::unique_ptr<MicrophoneTap> audioEngine_;
  Subscription refreshTimer_;
  bool isShowing_ = false;
};

}  // namespace voxtrel
