#pragma once

#import <AppKit/AppKit.h>

/// The controls of a form; a window adds the title and the close box.
/// Thread: the main thread.
@protocol VoxtrelFormContent <NSObject>
/// Called after the window has come up.
- (void)appeared;
/// The control with the initial focus; nil focuses none.
- (NSView*)firstInFocus;
@end

/// A form's window: titled, closable, of one size. Return presses its default button, else the focused
/// one, once while it is held; Escape and Command-W close it.
/// Thread: the main thread.  Owns: its content.
@interface VoxtrelFormWindow : NSWindow
- (instancetype)initWithTitle:(NSString*)title content:(NSView<VoxtrelFormContent>*)content;
/// Shows the window, centred unless it is visible, in front and focused.
- (void)comeUp;
@end
