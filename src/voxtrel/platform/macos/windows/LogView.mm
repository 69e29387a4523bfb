#include "voxtrel/platform/macos/windows/LogView.h"

#include "voxtrel/platform/macos/foundation/Strings.h"
#include "voxtrel/platform/macos/windows/FormStyle.h"

namespace {

/// From the background's edge to the text.
constexpr CGFloat kInset = 4;

NSTextView* makeTextView(NSSize size) {
  auto* const text = [[NSTextView alloc] initWithFrame:NSMakeRect(0, 0, size.width, size.height)];
  text.editable = NO;
  text.selectable = YES;
  text.drawsBackground = NO;
  text.verticallyResizable = YES;
  text.horizontallyResizable = NO;
  text.minSize = NSMakeSize(0, size.height);
  text.maxSize = NSMakeSize(CGFLOAT_MAX, CGFLOAT_MAX);
  text.autoresizingMask = NSViewWidthSizable;
  text.textContainerInset = NSMakeSize(kInset, kInset);
  text.textContainer.widthTracksTextView = YES;
  // A long log is laid out only where it is seen.
  text.layoutManager.allowsNonContiguousLayout = YES;
  return text;
}

NSDictionary<NSAttributedStringKey, id>* lineAttributes(CGFloat lineSpacing) {
  auto* const paragraph = [[NSMutableParagraphStyle alloc] init];
  paragraph.lineSpacing = lineSpacing;
  return @{
    NSFontAttributeName : voxtrel::monospacedCaptionFont(),
    NSForegroundColorAttributeName : NSColor.textColor,
    NSParagraphStyleAttributeName : paragraph
  };
}

}  // namespace

@implementation VoxtrelLogView {
  NSTextView* text_;
  NSDictionary<NSAttributedStringKey, id>* attributes_;
  CGFloat cornerRadius_;
  std::size_t shown_;
}

- (instancetype)initWithFrame:(NSRect)frame
                  lineSpacing:(CGFloat)lineSpacing
                 cornerRadius:(CGFloat)cornerRadius {
  self = [super initWithFrame:frame];
  if (self == nil) return nil;
  cornerRadius_ = cornerRadius;
  attributes_ = lineAttributes(lineSpacing);
  auto* const scroll = [[NSScrollView alloc] initWithFrame:self.bounds];
  scroll.hasVerticalScroller = YES;
  scroll.borderType = NSNoBorder;
  scroll.drawsBackground = NO;
  scroll.autoresizingMask = NSViewWidthSizable | NSViewHeightSizable;
  text_ = makeTextView(scroll.contentSize);
  text_.accessibilityLabel = @"Download log";
  scroll.documentView = text_;
  [self addSubview:scroll];
  return self;
}

- (void)drawRect:(NSRect)__unused dirtyRect {
  [NSColor.textBackgroundColor setFill];
  [[NSBezierPath bezierPathWithRoundedRect:self.bounds xRadius:cornerRadius_
                                   yRadius:cornerRadius_] fill];
}

- (void)follow:(const std::vector<std::string>&)lines {
  if (lines.size() == shown_) return;
  std::string added;
  for (; shown_ < lines.size(); ++shown_) {
    if (shown_ > 0) added += '\n';
    added += lines[shown_];
  }
  NSTextStorage* const storage = text_.textStorage;
  [storage
      appendAttributedString:[[NSAttributedString alloc] initWithString:voxtrel::toNSString(added)
                                                             attributes:attributes_]];
  [text_ scrollRangeToVisible:NSMakeRange(storage.length, 0)];
}

- (void)clear {
  shown_ = 0;
  [text_.textStorage deleteCharactersInRange:NSMakeRange(0, text_.textStorage.length)];
}

@end
