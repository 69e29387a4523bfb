#import "support/macos/whole/WholeApplication.h"

#import "rig_audio.h"
#import "rig_services.h"
#import "support/macos/Symbols.h"
#import "voxtrel/platform/macos/foundation/Strings.h"
#import "voxtrel/platform/macos/statusitem/AppKitStatusItem.h"

namespace voxtrel::testing {
namespace {

/// Every permission is granted, as at a second start.
void grantAll() {
  [RigServices setAccessibilityTrusted:YES];
  [RigServices setLoginItemError:nil];
  RigServices.notificationsGranted = YES;
  [RigAudio setPermission:YES];
  [RigAudio setStartError:nil];
}

}  // namespace

WholeApplication::WholeApplication()
    : native(*connectToDesktop(argumentCount, arguments.data(), "0.1.0", StartRequest::open)),
      desktop{.accessibilityTrust = native->accessibilityTrust,
              .alerts = native->alerts,
              .application = application,
              .bundle = bundle,
              .backgroundQueue = native->backgroundQueue,
              .childProcesses = native->childProcesses,
              .clock = native->clock,
              .formWindows = native->formWindows,
              .frameTimer = native->frameTimer,
              .log = native->log,
              .loginItem = native->loginItem,
              .mainLoop = mainLoop,
              .microphone = native->microphone,
              .microphoneAccess = native->microphoneAccess,
              .notifications = notifications,
              .overlayStage = native->overlayStage,
              .privacySettings = native->privacySettings,
              .sleepWatch = native->sleepWatch,
              .statusItem = native->statusItem,
              .updater = native->updater,
              .userDefaults = native->userDefaults,
              .vectorMath = native->vectorMath,
              .homeDirectory = files.home().path().string()},
      app(std::make_unique<QuillbackApp>(desktop)) {
  grantAll();
}

WholeApplication::~WholeApplication() {
  if (app && application.delegate != nullptr) application.terminate();
  destroy();
  runOnce();
}

void WholeApplication::launchToEngine() {
  files.provideWeights();
  launch();
  ASSERT_TRUE(engineStarts());
}

bool WholeApplication::engineStarts(Mode mode) const {
  return runUntil([&] { return engineRuns(mode); });
}

bool WholeApplication::engineEnds(Mode mode) const {
  return runUntil([&] { return !engineRuns(mode); });
}

void WholeApplication::tell(const std::string& command, Mode mode) const {
  EXPECT_TRUE(files.tell(command, mode)) << command;
}

void WholeApplication::record() const {
  tell("print Ready.");
  ASSERT_TRUE(shows(kReady, @"mic"));
  tell("print Recording...");
  ASSERT_TRUE(runUntil([] { return overlay() != nil; }));
}

NSStatusItem* WholeApplication::item() const {
  return static_cast<AppKitStatusItem&>(native->statusItem).nativeItem();
}

std::string WholeApplication::title(NSInteger row) const {
  return toString([menu() itemAtIndex:row].title);
}

bool WholeApplication::shows(const std::string& status, NSString* symbol) const {
  return runUntil([&] {
    return title(0) == status && [item().button.image.testSymbolName isEqualToString:symbol];
  });
}

void WholeApplication::choose(NSInteger row) const {
  [menu() update];
  [menu() performActionForItemAtIndex:row];
}

NSWindow* WholeApplication::window(NSString* title) {
  for (NSWindow* each in NSApp.windows) {
    const bool isForm = [each isKindOfClass:NSClassFromString(@"VoxtrelFormWindow")];
    if (isForm && each.isVisible && [each.title isEqualToString:title]) return each;
  }
  return nil;
}

bool WholeApplication::opens(NSString* title) {
  return runUntil([&] { return window(title) != nil; });
}

bool WholeApplication::closes(NSString* title) {
  return runUntil([&] { return window(title) == nil; });
}

}  // namespace voxtrel::testing
