// Declarations of AppKit: windows, controls, fonts and texts.
#pragma once

#import <AppKit/AppKit.h>

#import "Application.h"
#import "Foundation.h"

NS_ASSUME_NONNULL_BEGIN

@class NSBezierPath, NSCell, NSEvent, NSFont, NSScreen, NSTextContainer;

// Events -----------------------------------------------------------------------------------------

typedef NS_OPTIONS(NSUInteger, NSEventModifierFlags) {
  NSEventModifierFlagShift = 1 << 17,
  NSEventModifierFlagControl = 1 << 18,
  NSEventModifierFlagOption = 1 << 19,
  NSEventModifierFlagCommand = 1 << 20
};

@interface NSEvent : NSObject
@property (readonly) NSEventModifierFlags modifierFlags;
@property (nullable, readonly, copy) NSString* charactersIgnoringModifiers;
@property (readonly, getter=isARepeat) BOOL ARepeat;
@end

@interface NSResponder (Keys)
- (void)keyDown:(NSEvent*)event;
- (BOOL)performKeyEquivalent:(NSEvent*)event;
- (void)cancelOperation:(nullable id)sender;
@end

@protocol NSStandardCopying
- (void)copy:(nullable id)sender;
@end

@interface NSApplication (Actions)
- (BOOL)sendAction:(SEL)action to:(nullable id)target from:(nullable id)sender;
@end

// Fonts and colours ------------------------------------------------------------------------------

typedef NSString* NSFontTextStyle;
typedef NSString* NSFontTextStyleOptionKey;
APPKIT_EXTERN NSFontTextStyle const NSFontTextStyleHeadline API_AVAILABLE(macos(11.0));
APPKIT_EXTERN NSFontTextStyle const NSFontTextStyleCaption1 API_AVAILABLE(macos(11.0));
APPKIT_EXTERN const NSFontWeight NSFontWeightSemibold;

@interface NSFont : NSObject
@property (class, readonly) CGFloat systemFontSize;
@property (readonly) CGFloat pointSize;
+ (NSFont*)systemFontOfSize:(CGFloat)size;
+ (NSFont*)systemFontOfSize:(CGFloat)size weight:(NSFontWeight)weight;
+ (NSFont*)monospacedSystemFontOfSize:(CGFloat)size
                               weight:(NSFontWeight)weight API_AVAILABLE(macos(10.15));
+ (NSFont*)preferredFontForTextStyle:(NSFontTextStyle)style
                             options:(NSDictionary<NSFontTextStyleOptionKey, id>*)options
    API_AVAILABLE(macos(11.0));
@end

@interface NSColor (Named)
@property (class, strong, readonly) NSColor* textColor;
@property (class, strong, readonly) NSColor* textBackgroundColor;
@property (class, strong, readonly) NSColor* secondaryLabelColor;
@property (class, strong, readonly) NSColor* systemOrangeColor;
@property (class, strong, readonly) NSColor* clearColor;
+ (NSColor*)colorWithCalibratedRed:(CGFloat)red
                             green:(CGFloat)green
                              blue:(CGFloat)blue
                             alpha:(CGFloat)alpha;
- (void)setFill;
- (void)setStroke;
@end

// Views ------------------------------------------------------------------------------------------

typedef NS_OPTIONS(NSUInteger, NSAutoresizingMaskOptions) {
  NSViewWidthSizable = 2,
  NSViewHeightSizable = 16
};

@interface NSView (Drawing)
- (instancetype)initWithFrame:(NSRect)frame;
@property NSRect bounds;
@property (nullable, readonly, assign) NSView* superview;
@property (getter=isHidden) BOOL hidden;
@property BOOL needsDisplay;
@property (readonly, getter=isOpaque) BOOL opaque;
@property (readonly, getter=isFlipped) BOOL flipped;
@property NSAutoresizingMaskOptions autoresizingMask;
@property (nullable, copy) NSString* accessibilityLabel;
- (void)addSubview:(NSView*)view;
- (void)drawRect:(NSRect)dirtyRect;
- (NSRect)alignmentRectForFrame:(NSRect)frame;
- (NSRect)frameForAlignmentRect:(NSRect)alignmentRect;
@end

@interface NSCell : NSObject
- (NSSize)cellSizeForBounds:(NSRect)bounds;
- (void)performClick:(nullable id)sender;
@end

@interface NSButtonCell : NSCell
@end

typedef NS_ENUM(NSUInteger, NSControlSize) {
  NSControlSizeRegular = 0,
  NSControlSizeLarge API_AVAILABLE(macos(11.0)) = 3
};
typedef NS_ENUM(NSInteger, NSTextAlignment) {
  NSTextAlignmentLeft = 0,
  NSTextAlignmentCenter = 1,
  NSTextAlignmentRight = 2
};

@interface NSControl (Values)
@property (nullable, strong) __kindof NSCell* cell;
@property (copy) NSString* stringValue;
@property (getter=isEnabled) BOOL enabled;
@property (nullable, strong) NSFont* font;
@property NSTextAlignment alignment;
@property NSControlSize controlSize;
- (void)sizeToFit;
@end

typedef NSInteger NSControlStateValue;
static const NSControlStateValue NSControlStateValueOff = 0;
static const NSControlStateValue NSControlStateValueOn = 1;

@interface NSButton (Titles)
+ (instancetype)buttonWithTitle:(NSString*)title
                         target:(nullable id)target
                         action:(nullable SEL)action;
+ (instancetype)checkboxWithTitle:(NSString*)title
                           target:(nullable id)target
                           action:(nullable SEL)action;
@property NSControlStateValue state;
@property (copy) NSString* keyEquivalent;
- (void)performClick:(nullable id)sender;
@end

@interface NSPopUpButton : NSButton
- (instancetype)initWithFrame:(NSRect)frame pullsDown:(BOOL)pullsDown;
@property (readonly) NSInteger indexOfSelectedItem;
- (void)addItemWithTitle:(NSString*)title;
- (void)selectItemAtIndex:(NSInteger)index;
@end

@interface NSTextField : NSControl
+ (instancetype)wrappingLabelWithString:(NSString*)text;
@property (nullable, copy) NSColor* textColor;
@property (getter=isSelectable) BOOL selectable;
@end

typedef NS_ENUM(NSUInteger, NSProgressIndicatorStyle) { NSProgressIndicatorStyleBar = 0 };

@interface NSProgressIndicator : NSView
@property NSProgressIndicatorStyle style;
@property (getter=isIndeterminate) BOOL indeterminate;
@property double minValue;
@property double maxValue;
@property double doubleValue;
- (void)sizeToFit;
@end

// Texts ------------------------------------------------------------------------------------------

typedef NSString* NSAttributedStringKey;
APPKIT_EXTERN NSAttributedStringKey const NSFontAttributeName;
APPKIT_EXTERN NSAttributedStringKey const NSForegroundColorAttributeName;
APPKIT_EXTERN NSAttributedStringKey const NSParagraphStyleAttributeName;

@interface NSAttributedString : NSObject
- (instancetype)initWithString:(NSString*)text
                    attributes:(nullable NSDictionary<NSAttributedStringKey, id>*)attributes;
@property (readonly) NSUInteger length;
@end

@interface NSTextStorage : NSAttributedString
- (void)appendAttributedString:(NSAttributedString*)text;
- (void)deleteCharactersInRange:(NSRange)range;
@end

@interface NSMutableParagraphStyle : NSObject
@property CGFloat lineSpacing;
@end

@interface NSLayoutManager : NSObject
@property BOOL allowsNonContiguousLayout;
@end

@interface NSTextContainer : NSObject
@property BOOL widthTracksTextView;
@end

@interface NSTextView : NSView
@property (getter=isEditable) BOOL editable;
@property (getter=isSelectable) BOOL selectable;
@property BOOL drawsBackground;
@property (getter=isVerticallyResizable) BOOL verticallyResizable;
@property (getter=isHorizontallyResizable) BOOL horizontallyResizable;
@property NSSize minSize;
@property NSSize maxSize;
@property NSSize textContainerInset;
@property (nullable, assign) NSTextContainer* textContainer;
@property (nullable, readonly, assign) NSLayoutManager* layoutManager;
@property (nullable, readonly, assign) NSTextStorage* textStorage;
- (void)scrollRangeToVisible:(NSRange)range;
@end

typedef NS_ENUM(NSUInteger, NSBorderType) { NSNoBorder = 0 };

@interface NSScrollView : NSView
@property BOOL hasVerticalScroller;
@property NSBorderType borderType;
@property BOOL drawsBackground;
@property (readonly) NSSize contentSize;
@property (nullable, strong) __kindof NSView* documentView;
@end

// Windows ----------------------------------------------------------------------------------------

typedef NS_OPTIONS(NSUInteger, NSWindowStyleMask) {
  NSWindowStyleMaskBorderless = 0,
  NSWindowStyleMaskTitled = 1,
  NSWindowStyleMaskClosable = 2
};
typedef NS_ENUM(NSUInteger, NSBackingStoreType) { NSBackingStoreBuffered = 2 };
typedef NS_OPTIONS(NSUInteger, NSWindowCollectionBehavior) {
  NSWindowCollectionBehaviorCanJoinAllSpaces = 1,
  NSWindowCollectionBehaviorStationary = 16
};
typedef NSInteger NSWindowLevel;
static const NSWindowLevel NSFloatingWindowLevel = 3;

@interface NSWindow : NSResponder
- (instancetype)initWithContentRect:(NSRect)contentRect
                          styleMask:(NSWindowStyleMask)styleMask
                            backing:(NSBackingStoreType)backing
                              defer:(BOOL)defer;
@property (getter=isReleasedWhenClosed) BOOL releasedWhenClosed;
@property (copy) NSString* title;
@property (nullable, strong) __kindof NSView* contentView;
@property (readonly, getter=isVisible) BOOL visible;
@property NSWindowLevel level;
@property (getter=isOpaque) BOOL opaque;
@property (nullable, copy) NSColor* backgroundColor;
@property BOOL hasShadow;
@property BOOL ignoresMouseEvents;
@property NSWindowCollectionBehavior collectionBehavior;
@property (nullable, readonly, weak) NSResponder* firstResponder;
@property (nullable, strong) NSButtonCell* defaultButtonCell;
@property (readonly) BOOL canBecomeKeyWindow;
@property (readonly) BOOL canBecomeMainWindow;
- (BOOL)makeFirstResponder:(nullable NSResponder*)responder;
- (void)center;
- (void)close;
- (void)performClose:(nullable id)sender;
- (void)makeKeyAndOrderFront:(nullable id)sender;
- (void)orderFrontRegardless;
- (void)orderOut:(nullable id)sender;
@end

typedef NSInteger NSModalResponse;
static const NSModalResponse NSAlertFirstButtonReturn = 1000;
typedef NS_ENUM(NSUInteger, NSAlertStyle) {
  NSAlertStyleWarning = 0,
  NSAlertStyleInformational = 1,
  NSAlertStyleCritical = 2
};

@interface NSAlert : NSObject
@property (copy) NSString* messageText;
@property (copy) NSString* informativeText;
@property NSAlertStyle alertStyle;
- (NSButton*)addButtonWithTitle:(NSString*)title;
- (NSModalResponse)runModal;
@end

@interface NSAlert (Buttons)
@property (readonly, copy) NSArray<NSButton*>* buttons;
@end

@interface NSArray <ObjectType>(Ends)
@property (nullable, nonatomic, readonly) ObjectType lastObject;
@end

@interface NSTimer (State)
@property (readonly, getter=isValid) BOOL valid;
@end

// Screens and drawing ----------------------------------------------------------------------------

@interface NSScreen : NSObject
@property (class, nullable, readonly, strong) NSScreen* mainScreen;
@property (class, readonly, copy) NSArray<NSScreen*>* screens;
@property (readonly) NSRect frame;
@end

@interface NSBezierPath : NSObject
+ (NSBezierPath*)bezierPathWithRoundedRect:(NSRect)rect xRadius:(CGFloat)x yRadius:(CGFloat)y;
+ (NSBezierPath*)bezierPathWithOvalInRect:(NSRect)rect;
@property CGFloat lineWidth;
- (void)fill;
- (void)stroke;
- (void)addClip;
@end

#define NSZeroRect NSMakeRect(0, 0, 0, 0)
#define CGFLOAT_MAX __DBL_MAX__

NS_ASSUME_NONNULL_END
