#pragma once

#include "overlay/RecordingOverlay.h"
#include "platform/kissfft/KissRealFft.h"
#include "platform/linux/PulseMicrophone.h"
#include "platform/linux/QtMainLoop.h"
#include "platform/linux/QtOverlayStage.h"
#include "platform/linux/StandardErrorLog.h"
#include "platform/linux/TimerFdFrameTimer.h"
#include "support/overlay_driver/ObservedPorts.h"

namespace voxtrel::testing {

/// The overlay with the desktop's own adapters, and what passes between them observed.
/// Thread: the main thread, with a QGuiApplication.
struct RealOverlay {
  StandardErrorLog log{LogLevel::info};
  QtMainLoop mainLoop;
  QtOverlayStage realStage;
  PulseMicrophone realMicrophone;
  TimerFdFrameTimer frameTimer;
  ObservedStage stage{realStage};
  ObservedMicrophone microphone{realMicrophone};
  RecordingOverlay overlay{{.stage = stage,
                            .microphone = microphone,
                            .frameTimer = frameTimer,
                            .mainLoop = mainLoop,
                            .log = log,
                            .makeFft = KissRealFft::make}};
};

}  // namespace voxtrel::testing
