#include "voxtrel/platform/macos/windows/FormStyle.h"

#include <cmath>

#include "voxtrel/platform/macos/foundation/Strings.h"

namespace voxtrel {

NSFont* headlineFont() {
  return [NSFont preferredFontForTextStyle:NSFontTextStyleHeadline options:@{}];
}

NSFont* semiboldFont() {
  return [NSFont systemFontOfSize:NSFont.systemFontSize weight:NSFontWeightSemibold];
}

NSFont* captionFont() {
  return [NSFont preferredFontForTextStyle:NSFontTextStyleCaption1 options:@{}];
}

NSFont* monospacedCaptionFont() {
  return [NSFont monospacedSystemFontOfSize:captionFont().pointSize weight:NSFontWeightRegular];
}

NSTextField* makeFormLabel(std::string_view text, NSFont* font, NSTextAlignment alignment) {
  NSTextField* const label = [NSTextField wrappingLabelWithString:toNSString(text)];
  label.selectable = NO;
  label.font = font;
  label.alignment = alignment;
  return label;
}

NSButton* makeLargeButton(std::string_view title, id target, SEL action) {
  NSButton* const button = [NSButton buttonWithTitle:toNSString(title) target:target action:action];
  button.controlSize = NSControlSizeLarge;
  [button sizeToFit];
  return button;
}

CGFloat neededHeight(NSControl* control, CGFloat width) {
  constexpr CGFloat kAnyHeight = 10000;
  return std::ceil([control.cell cellSizeForBounds:NSMakeRect(0, 0, width, kAnyHeight)].height);
}

void setAlignmentFrame(NSView* view, NSRect place) {
  view.frame = [view frameForAlignmentRect:place];
}

}  // namespace voxtrel
