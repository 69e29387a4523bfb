#pragma once

#import <AppKit/AppKit.h>

#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

namespace voxtrel::testing {

/// A native object that may go away at any time.
struct WeakObject {
  __weak id object;
};

/// How many of `objects` are still alive.
inline std::size_t countAlive(const std::vector<WeakObject>& objects) {
  std::size_t alive = 0;
  for (const WeakObject& each : objects) {
    if (each.object != nil) ++alive;
  }
  return alive;
}

/// Runs what waits in the main queue, without waiting for more.
inline void drain() {
  [NSRunLoop.mainRunLoop runMode:NSDefaultRunLoopMode beforeDate:[NSDate date]];
}

/// The same in every mode of the application; each keeps a timer that has ended until it runs.
inline void drainAllModes() {
  for (NSRunLoopMode mode in
       @[ NSDefaultRunLoopMode, NSModalPanelRunLoopMode, NSEventTrackingRunLoopMode ]) {
    [NSRunLoop.mainRunLoop runMode:mode beforeDate:[NSDate date]];
  }
}

/// The visible window of this class; nil if there is none.
inline NSWindow* visibleWindow(NSString* className) {
  for (NSWindow* window in NSApp.windows) {
    if (window.isVisible && [window isKindOfClass:NSClassFromString(className)]) return window;
  }
  return nil;
}

/// The window of this class that was made last, visible or not; nil if there is none.
inline NSWindow* newestWindow(NSString* className) {
  NSWindow* newest = nil;
  for (NSWindow* window in NSApp.windows) {
    const bool matches = [window isKindOfClass:NSClassFromString(className)];
    if (matches && window.windowNumber > newest.windowNumber) newest = window;
  }
  return newest;
}

inline bool isShown(NSView* view) {
  for (; view != nil; view = view.superview) {
    if (view.isHidden) return false;
  }
  return true;
}

/// The views of exactly this class within `root` that are shown, in their order.
template <typename View>
void collect(NSView* root, std::vector<View*>& found) {
  if ([root isMemberOfClass:[View class]] && isShown(root))
    found.push_back(static_cast<View*>(root));
  for (NSView* view in root.subviews) collect<View>(view, found);
}

template <typename View>
std::vector<View*> viewsOf(NSWindow* window) {
  std::vector<View*> found;
  collect<View>(window.contentView, found);
  return found;
}

/// The shown button with this title; nil if there is none.
inline NSButton* buttonTitled(NSWindow* window, NSString* title) {
  for (NSButton* button : viewsOf<NSButton>(window)) {
    if ([button.title isEqualToString:title]) return button;
  }
  return nil;
}

/// The shown label with this text; nil if there is none.
inline NSTextField* labelWith(NSWindow* window, NSString* text) {
  for (NSTextField* label : viewsOf<NSTextField>(window)) {
    if ([label.stringValue isEqualToString:text]) return label;
  }
  return nil;
}

/// The place of a view in its window; y grows upwards.
inline NSRect placeOf(NSView* view) {
  return [view convertRect:view.bounds toView:nil];
}

inline NSEvent* keyDown(NSWindow* window, NSString* characters, NSEventModifierFlags modifiers = 0,
                        bool isRepeat = false) {
  return [NSEvent keyEventWithType:NSEventTypeKeyDown
                          location:NSZeroPoint
                     modifierFlags:modifiers
                         timestamp:0
                      windowNumber:window.windowNumber
                           context:nil
                        characters:characters
       charactersIgnoringModifiers:characters
                         isARepeat:isRepeat
                           keyCode:0];
}

/// Presses a key in a window, as the application passes it on.
inline void press(NSWindow* window, NSString* characters, NSEventModifierFlags modifiers = 0,
                  bool isRepeat = false) {
  [NSApp sendEvent:keyDown(window, characters, modifiers, isRepeat)];
}

/// What a view shows now.
inline NSBitmapImageRep* pictureOf(NSView* view) {
  [view display];
  [view lockFocus];
  auto* const picture = [[NSBitmapImageRep alloc] initWithFocusedViewRect:view.bounds];
  [view unlockFocus];
  return picture;
}

/// Keeps a picture as `name`.png in the folder that VOXTREL_MACOS_PICTURES names, if it is set.
inline void keepPicture(NSBitmapImageRep* picture, const std::string& name) {
  const char* const folder = std::getenv("VOXTREL_MACOS_PICTURES");
  if (folder == nullptr) return;
  NSString* const path = [NSString stringWithFormat:@"%s/%s.png", folder, name.c_str()];
  [[picture representationUsingType:NSPNGFileType properties:@{}] writeToFile:path atomically:YES];
}

inline void keepPicture(NSView* view, const std::string& name) {
  if (std::getenv("VOXTREL_MACOS_PICTURES") != nullptr) keepPicture(pictureOf(view), name);
}

}  // namespace voxtrel::testing
