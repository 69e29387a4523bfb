#import <AppKit/AppKit.h>
#import <objc/runtime.h>

NSFontTextStyle const NSFontTextStyleHeadline = @"UICTFontTextStyleHeadline";
NSFontTextStyle const NSFontTextStyleCaption1 = @"UICTFontTextStyleCaption1";
const NSFontWeight NSFontWeightSemibold = 0.3;

namespace {

// Sizes of macOS.
constexpr CGFloat kHeadlineSize = 13;
constexpr CGFloat kCaptionSize = 10;

char accessibilityLabelKey;
char controlSizeKey;

}  // namespace

@implementation NSFont (MoreAppKit)

+ (NSFont*)systemFontOfSize:(CGFloat)size weight:(NSFontWeight)weight {
  return weight >= NSFontWeightSemibold ? [NSFont boldSystemFontOfSize:size]
                                        : [NSFont systemFontOfSize:size];
}

+ (NSFont*)monospacedSystemFontOfSize:(CGFloat)size weight:(NSFontWeight)__unused weight {
  return [NSFont userFixedPitchFontOfSize:size];
}

+ (NSFont*)preferredFontForTextStyle:(NSFontTextStyle)style
                             options:(NSDictionary*)__unused options {
  return [style isEqualToString:NSFontTextStyleHeadline]
             ? [NSFont boldSystemFontOfSize:kHeadlineSize]
             : [NSFont systemFontOfSize:kCaptionSize];
}

@end

/// The rig's measures a text that wraps as one line.
@interface NSTextFieldCell (MoreAppKit)
@end

@implementation NSTextFieldCell (MoreAppKit)

- (NSSize)cellSizeForBounds:(NSRect)bounds {
  constexpr CGFloat kInset = 2;
  const NSSize inner = NSMakeSize(bounds.size.width - 2 * kInset, bounds.size.height);
  const NSRect text =
      [self.attributedStringValue boundingRectWithSize:inner
                                               options:NSStringDrawingUsesLineFragmentOrigin];
  return NSMakeSize(text.size.width + 2 * kInset, text.size.height);
}

@end

@implementation NSControl (MoreAppKit)

- (NSControlSize)controlSize {
  return static_cast<NSControlSize>([objc_getAssociatedObject(self, &controlSizeKey) integerValue]);
}

- (void)setControlSize:(NSControlSize)size {
  objc_setAssociatedObject(self, &controlSizeKey, @(size), OBJC_ASSOCIATION_RETAIN);
}

@end

@implementation NSView (MoreAppKit)

- (NSString*)accessibilityLabel {
  return objc_getAssociatedObject(self, &accessibilityLabelKey);
}

- (void)setAccessibilityLabel:(NSString*)label {
  objc_setAssociatedObject(self, &accessibilityLabelKey, label, OBJC_ASSOCIATION_COPY);
}

- (NSRect)alignmentRectForFrame:(NSRect)frame {
  return frame;
}

- (NSRect)frameForAlignmentRect:(NSRect)alignmentRect {
  return alignmentRect;
}

@end
