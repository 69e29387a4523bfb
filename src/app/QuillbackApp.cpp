#include "app/QuillbackApp.h"

#include "app/AppDelegate.h"
#include "platform/Application.h"
#include "platform/Desktop.h"

namespace voxtrel {

QuillbackApp::QuillbackApp(Desktop& desktop)
    : desktop_(desktop), appDelegate_(std::make_shared<AppDelegate>(desktop)) {}

QuillbackApp::~QuillbackApp() = default;

int QuillbackApp::run() {
  return desktop_.application().run(*appDelegate_);
}

}  // namespace voxtrel
