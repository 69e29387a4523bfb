#import "support/macos/Sparkle.h"

#import <AppKit/AppKit.h>

@implementation TestUpdaterController

- (instancetype)initWithStartingUpdater:(BOOL)startUpdater
                        updaterDelegate:(id)updaterDelegate
                     userDriverDelegate:(id)userDriverDelegate {
  self = [super init];
  if (self != nil) {
    _started = startUpdater;
    _hasDelegates = updaterDelegate != nil || userDriverDelegate != nil;
  }
  return self;
}

- (void)checkForUpdates:(id)__unused sender {
  ++_checks;
}

- (BOOL)validateMenuItem:(NSMenuItem*)__unused item {
  return !_isBusy;
}

@end
