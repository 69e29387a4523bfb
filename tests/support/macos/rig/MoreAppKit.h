// Declarations of what the adapters use of AppKit and Accelerate and the rig lacks. Read before every
// source that is built with the rig; not used on a Mac.
#pragma once

#include <rig.h>

#ifdef __OBJC__
#import <Accelerate/Accelerate.h>
#import <AppKit/AppKit.h>

extern "C" void vDSP_zvabs(const DSPSplitComplex* values, vDSP_Stride step, float* results,
                           vDSP_Stride resultStep, vDSP_Length count);
extern "C" void vDSP_meanv(const float* values, vDSP_Stride step, float* mean, vDSP_Length count);

typedef NSString* NSFontTextStyle;
extern NSFontTextStyle const NSFontTextStyleHeadline;
extern NSFontTextStyle const NSFontTextStyleCaption1;
extern const NSFontWeight NSFontWeightSemibold;

@interface NSFont (MoreAppKit)
+ (NSFont*)systemFontOfSize:(CGFloat)size weight:(NSFontWeight)weight;
+ (NSFont*)monospacedSystemFontOfSize:(CGFloat)size weight:(NSFontWeight)weight;
+ (NSFont*)preferredFontForTextStyle:(NSFontTextStyle)style options:(NSDictionary*)options;
@end

static const NSControlSize NSControlSizeLarge = static_cast<NSControlSize>(3);

@interface NSControl (MoreAppKit)
@property NSControlSize controlSize;
@end

@interface NSView (MoreAppKit)
@property (copy) NSString* accessibilityLabel;
- (NSRect)alignmentRectForFrame:(NSRect)frame;
- (NSRect)frameForAlignmentRect:(NSRect)alignmentRect;
@end
#endif
