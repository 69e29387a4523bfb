#pragma once

#include <functional>
#include <memory>

#include "support/FakeOverlayPorts.h"
#include "support/FakePorts.h"
#include "support/ManualTime.h"
#include "voxtrel/overlay/RecordingOverlay.h"

namespace voxtrel::testing {

/// Everything around a recording overlay, under the test's control.
struct OverlayWorld {
  ManualTime time;
  FakeLog log;
  Diary diary;
  FakeOverlayStage stage{diary};
  FakeMicrophone microphone{diary};
  FakeFrameTimer frameTimer{diary};
  std::function<std::unique_ptr<RealFft>()> makeFft = [] { return nullptr; };

  OverlayPorts ports() {
    return {.stage = stage,
            .microphone = microphone,
            .frameTimer = frameTimer,
            .mainLoop = time,
            .log = log,
            .makeFft = [this] { return makeFft(); }};
  }
};

struct OverlayBench : OverlayWorld {
  std::unique_ptr<RecordingOverlay> overlay = std::make_unique<RecordingOverlay>(ports());

  /// What is on the screen after one tick of the timer.
  RecordingCanvas nextFrame() {
    frameTimer.task();
    return stage.window->paint();
  }
};

}  // namespace voxtrel::testing
