// The user of the application's program on the rig: grants what it asks for, except what VOXTREL_USER_REFUSES
// names ("microphone"), and chooses the menu row that is named in the file VOXTREL_USER_CHOOSES, once that is there.
#import <AppKit/AppKit.h>

#include <cstdlib>
#include <string_view>

#import "rig_audio.h"
#import "rig_services.h"

namespace {

/// The menu in the rig's menu bar; nil until there is one.
NSMenu* menuInBar() {
  for (NSWindow* window in NSApp.windows) {
    if (![window.title isEqualToString:@"rig status bar"]) continue;
    NSView* const bar = window.contentView;
    NSView* const button = bar.subviews.firstObject;
    return [[button valueForKey:@"item"] menu];
  }
  return nil;
}

void choose(NSString* title) {
  NSMenu* const menu = menuInBar();
  [menu update];
  const NSInteger row = [menu indexOfItemWithTitle:title];
  if (row >= 0) [menu performActionForItemAtIndex:row];
}

bool refuses(std::string_view what) {
  const char* const refused = std::getenv("VOXTREL_USER_REFUSES");
  return refused != nullptr && what == refused;
}

void watchForChoice(NSString* file) {
  NSTimer* const timer =
      [NSTimer timerWithTimeInterval:0.02
                             repeats:YES
                               block:^(NSTimer* ticking) {
                                 NSString* const title =
                                     [NSString stringWithContentsOfFile:file
                                                               encoding:NSUTF8StringEncoding
                                                                  error:nullptr];
                                 if (title.length == 0) return;
                                 [ticking invalidate];
                                 choose(title);
                               }];
  [NSRunLoop.mainRunLoop addTimer:timer forMode:NSRunLoopCommonModes];
}

__attribute__((constructor)) void sitDown() {
  @autoreleasepool {
    [RigServices setAccessibilityTrusted:YES];
    [RigAudio setPermission:!refuses("microphone")];
    const char* const choice = std::getenv("VOXTREL_USER_CHOOSES");
    if (choice != nullptr) watchForChoice(@(choice));
  }
}

}  // namespace
