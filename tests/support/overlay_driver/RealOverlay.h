#pragma once

#include "support/overlay_driver/ObservedPorts.h"
#include "voxtrel/overlay/RecordingOverlay.h"
#include "voxtrel/platform/kissfft/PlainVectorMath.h"
#include "voxtrel/platform/linux/application/QtMainLoop.h"
#include "voxtrel/platform/linux/log/OpenLog.h"
#include "voxtrel/platform/linux/overlay/QtOverlayStage.h"
#include "voxtrel/platform/linux/overlay/TimerFdFrameTimer.h"
#include "voxtrel/platform/linux/sound/PulseMicrophone.h"

namespace voxtrel::testing {

/// The overlay with the desktop's adapters; windows and microphone are observed.
/// Thread: the main thread, with a QGuiApplication.
struct RealOverlay {
  StandardErrorLog log{LogLevel::info};
  QtMainLoop mainLoop;
  QtOverlayStage realStage;
  PulseMicrophone realMicrophone;
  TimerFdFrameTimer frameTimer;
  PlainVectorMath vectorMath;
  ObservedStage stage{realStage};
  ObservedMicrophone microphone{realMicrophone};
  RecordingOverlay overlay{{.stage = stage,
                            .microphone = microphone,
                            .frameTimer = frameTimer,
                            .mainLoop = mainLoop,
                            .log = log,
                            .vectorMath = vectorMath}};
};

}  // namespace voxtrel::testing
