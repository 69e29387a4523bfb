#import "voxtrel/platform/macos/application/AppKitApplication.h"

#import <dispatch/dispatch.h>

#include <filesystem>
#include <functional>
#include <system_error>
#include <utility>

#include "common/posix/StopSignals.h"
#import "voxtrel/platform/macos/foundation/Strings.h"

/// Tells the application's delegate what AppKit reports.
@interface VXApplicationDelegate : NSObject <NSApplicationDelegate>
- (instancetype)initWithTarget:(voxtrel::ApplicationDelegate*)target;
@end

@implementation VXApplicationDelegate {
  voxtrel::ApplicationDelegate* _target;
}

- (instancetype)initWithTarget:(voxtrel::ApplicationDelegate*)target {
  self = [super init];
  if (self != nil) _target = target;
  return self;
}

- (void)applicationDidFinishLaunching:(NSNotification*)__unused notification {
  _target->applicationDidFinishLaunching();
}

- (BOOL)applicationShouldHandleReopen:(NSApplication*)__unused application
                    hasVisibleWindows:(BOOL)__unused hasVisibleWindows {
  _target->reopenRequested();
  return YES;
}

- (void)applicationWillTerminate:(NSNotification*)__unused notification {
  _target->applicationWillTerminate();
}

@end

namespace voxtrel {
namespace {

/// Calls a handler on the main thread while a descriptor is readable.
/// Thread: the main thread.  Owns: the source.  Borrows: the descriptor.
class ReadableSource {
 public:
  ReadableSource(int descriptor, std::function<void()> handler)
      : source_(dispatch_source_create(DISPATCH_SOURCE_TYPE_READ,
                                       static_cast<uintptr_t>(descriptor), 0,
                                       dispatch_get_main_queue())) {
    dispatch_source_set_event_handler(source_, ^{
      handler();
    });
    dispatch_resume(source_);
  }
  ReadableSource(const ReadableSource&) = delete;
  ReadableSource& operator=(const ReadableSource&) = delete;
  ~ReadableSource() {
    dispatch_source_cancel(source_);
#if !OS_OBJECT_USE_OBJC
    dispatch_release(source_);
#endif
  }

 private:
  const dispatch_source_t source_;
};

}  // namespace

int AppKitApplication::run(ApplicationDelegate& delegate) {
  StopSignals signals(StopSignals::InheritedIgnores::replace);
  const ReadableSource requests(signals.descriptor(), [&] {
    if (signals.take()) delegate.quitRequested();
  });
  NSApplication* application = NSApplication.sharedApplication;
  [application setActivationPolicy:NSApplicationActivationPolicyAccessory];
  // The application does not hold its delegate.
  VXApplicationDelegate* const reports = [[VXApplicationDelegate alloc] initWithTarget:&delegate];
  application.delegate = reports;
  [application run];
  application.delegate = nil;
  return 0;
}

void AppKitApplication::terminate() {
  [NSApplication.sharedApplication terminate:nil];
}

std::optional<std::string> MainBundle::auxiliaryExecutable(std::string_view name) const {
  const std::string path =
      toString([NSBundle.mainBundle pathForAuxiliaryExecutable:toNSString(name)]);
  // Whether it may be executed shows when it is started, and that can say why not.
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error)) return std::nullopt;
  return path;
}

}  // namespace voxtrel
