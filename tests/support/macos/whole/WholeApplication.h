#pragma once

#import <AppKit/AppKit.h>
#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <string>

#include "support/macos/Controls.h"
#include "support/macos/RunLoop.h"
#include "support/macos/whole/EngineFolder.h"
#include "support/macos/whole/StandIns.h"
#include "voxtrel/app/QuillbackApp.h"
#include "voxtrel/platform/Desktop.h"
#import "voxtrel/platform/macos/notifications/UserNotificationCenter.h"

namespace voxtrel::testing {

/// The application with the Mac's adapters, put together as the program does it, and a scripted engine.
/// Four ports stand in: the application, which would end the test's process; the bundle, which would be
/// the test program's; notifications, which need a bundle; and the main loop, which shortens repeats.
/// Thread: the main thread.
class WholeApplication : public ::testing::Test {
 protected:
  using Mode = EngineFolder::Mode;

  WholeApplication();
  ~WholeApplication() override;

  void launch(StartRequest request = StartRequest::open) { app->run(request); }
  /// With a model, until the engine runs.
  void launchToEngine();
  /// The application goes, with all that it holds.
  void destroy() { app.reset(); }

  bool engineRuns(Mode mode = Mode::run) const { return files.find(mode).has_value(); }
  /// Wait for it.
  bool engineStarts(Mode mode = Mode::run) const;
  bool engineEnds(Mode mode = Mode::run) const;
  void tell(const std::string& command, Mode mode = Mode::run) const;
  /// Brings a running engine to recording, until the overlay is on the screen.
  void record() const;

  NSStatusItem* item() const;
  NSMenu* menu() const { return item().menu; }
  std::string title(NSInteger row) const;
  /// Waits until the first row and the icon are these.
  bool shows(const std::string& status, NSString* symbol) const;
  /// Chooses a row as the open menu does.
  void choose(NSInteger row) const;

  /// The open form with this title; nil if there is none.
  static NSWindow* window(NSString* title);
  static bool opens(NSString* title);
  static bool closes(NSString* title);
  static NSWindow* overlay() { return visibleWindow(@"VoxtrelOverlayWindow"); }

  static constexpr NSInteger kSettingsRow = 3, kUpdatesRow = 4, kRestartRow = 5, kQuitRow = 6;
  static constexpr const char* kReady = "Ready \u2014 hold Right Cmd";
  static constexpr const char* kStopped = "Voxtrel stopped \u2014 click Restart";

  EngineFolder files;
  int argumentCount = 1;
  std::array<char, 8> name{"voxtrel"};
  std::array<char*, 2> arguments{name.data(), nullptr};
  const std::shared_ptr<const Desktop> native;
  HeldApplication application;
  GivenEngine bundle{files.engine().string()};
  HurriedLoop mainLoop{native->mainLoop};
  UserNotificationCenter notifications{[UNUserNotificationCenter currentNotificationCenter],
                                       native -> mainLoop};
  const Desktop desktop;
  std::unique_ptr<QuillbackApp> app;
};

}  // namespace voxtrel::testing
