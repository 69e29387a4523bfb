#include "voxtrel/app/QuillbackApp.h"

#include "voxtrel/app/AppDelegate.h"
#include "voxtrel/overlay/RecordingOverlay.h"
#include "voxtrel/platform/Application.h"
#include "voxtrel/platform/Desktop.h"

namespace voxtrel {

namespace {

OverlayPorts overlayPorts(const Desktop& desktop) {
  return {.stage = desktop.overlayStage,
          .microphone = desktop.microphone,
          .frameTimer = desktop.frameTimer,
          .mainLoop = desktop.mainLoop,
          .log = desktop.log,
          .vectorMath = desktop.vectorMath};
}

}  // namespace

QuillbackApp::QuillbackApp(const Desktop& desktop)
    : desktop_(desktop),
      overlay_(std::make_unique<RecordingOverlay>(overlayPorts(desktop))),
      appDelegate_(std::make_shared<AppDelegate>(desktop, *overlay_)) {}

QuillbackApp::~QuillbackApp() = default;

int QuillbackApp::run(StartRequest request) {
  if (request == StartRequest::settings) appDelegate_->settingsRequested();
  return desktop_.application.run(*appDelegate_);
}

}  // namespace voxtrel
