#include "app/QuillbackApp.h"

#include "app/AppDelegate.h"
#include "overlay/RecordingOverlay.h"
#include "platform/Application.h"
#include "platform/Desktop.h"

namespace voxtrel {

namespace {
struct NoOverlay : RecordingOverlay {
  void show() override {}
  void hide() override {}
};
}  // namespace
QuillbackApp::QuillbackApp(Desktop& desktop)
    : desktop_(desktop),
      overlay_(std::make_unique<NoOverlay>()),
      appDelegate_(std::make_shared<AppDelegate>(desktop, *overlay_)) {}

QuillbackApp::~QuillbackApp() = default;

int QuillbackApp::run() {
  return desktop_.application().run(*appDelegate_);
}

}  // namespace voxtrel
