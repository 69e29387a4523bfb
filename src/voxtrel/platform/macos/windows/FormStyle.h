#pragma once

#import <AppKit/AppKit.h>

#include <string_view>

namespace voxtrel {

// The system's fonts for each part of a form.
NSFont* headlineFont();
NSFont* semiboldFont();
NSFont* captionFont();
NSFont* monospacedCaptionFont();

/// A text that cannot be edited or selected. It wraps.
NSTextField* makeFormLabel(std::string_view text, NSFont* font, NSTextAlignment alignment);

/// A push button of the large control size.
NSButton* makeLargeButton(std::string_view title, id target, SEL action);

/// The height that `control` needs at this width.
CGFloat neededHeight(NSControl* control, CGFloat width);

/// Gives the view this place, not counting the room that it keeps for shadows and focus rings.
void setAlignmentFrame(NSView* view, NSRect place);

}  // namespace voxtrel
