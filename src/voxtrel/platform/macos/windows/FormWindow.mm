#include "voxtrel/platform/macos/windows/FormWindow.h"

namespace {

bool is(NSEvent* event, NSString* characters) {
  return [event.charactersIgnoringModifiers isEqualToString:characters];
}

bool isReturn(NSEvent* event) {
  return is(event, @"\r") || is(event, @"\x03");
}

bool isCommand(NSEvent* event, NSString* letter) {
  const NSEventModifierFlags modifiers =
      event.modifierFlags & (NSEventModifierFlagCommand | NSEventModifierFlagShift |
                             NSEventModifierFlagOption | NSEventModifierFlagControl);
  return modifiers == NSEventModifierFlagCommand && is(event, letter);
}

}  // namespace

@implementation VoxtrelFormWindow {
  NSView<VoxtrelFormContent>* content_;
}

- (instancetype)initWithTitle:(NSString*)title content:(NSView<VoxtrelFormContent>*)content {
  self = [super initWithContentRect:content.frame
                          styleMask:NSWindowStyleMaskTitled | NSWindowStyleMaskClosable
                            backing:NSBackingStoreBuffered
                              defer:NO];
  if (self == nil) return nil;
  self.releasedWhenClosed = NO;
  self.title = title;
  self.contentView = content;
  content_ = content;
  return self;
}

- (void)comeUp {
  const BOOL wasVisible = self.isVisible;
  if (!wasVisible) {
    [self center];
    [self makeFirstResponder:[content_ firstInFocus]];
  }
  [self makeKeyAndOrderFront:nil];
  [NSApp activateIgnoringOtherApps:YES];
  if (!wasVisible) [content_ appeared];
}

/// An agent has no menu bar, so these keys reach no menu.
- (BOOL)performKeyEquivalent:(NSEvent*)event {
  if (isReturn(event) && event.isARepeat) return YES;
  if ([super performKeyEquivalent:event]) return YES;
  if (isCommand(event, @"w")) {
    [self performClose:nil];
    return YES;
  }
  return isCommand(event, @"c") && [NSApp sendAction:@selector(copy:) to:nil from:self];
}

- (void)keyDown:(NSEvent*)event {
  if (isReturn(event)) {
    if (!event.isARepeat) [self handleReturn:event];
  } else if (is(event, @"\x1b")) {
    [self performClose:nil];
  } else {
    [super keyDown:event];
  }
}

/// For the default button, unless there is none. Pickers and checkboxes are buttons too.
- (void)handleReturn:(NSEvent*)event {
  if ([super performKeyEquivalent:event]) return;
  if (self.defaultButtonCell != nil) {
    [self.defaultButtonCell performClick:nil];
  } else if ([self.firstResponder isKindOfClass:NSButton.class]) {
    [static_cast<NSButton*>(self.firstResponder) performClick:nil];
  }
}

/// What Escape means to the log, which reads keys as a text does.
- (void)cancelOperation:(id)sender {
  [self performClose:sender];
}

@end
