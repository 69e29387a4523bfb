#pragma once

#import <AppKit/AppKit.h>

/// What a test may ask of an image made from a symbol. On the rig, the double also knows the symbols of
/// ours that the rig does not draw.
@interface NSImage (TestSymbols)
/// Nil for an image that is not a symbol, and on a Mac, which does not tell.
@property (nonatomic, readonly) NSString* testSymbolName;
/// 0 if the image was not given a size as a symbol.
@property (nonatomic, readonly) CGFloat testSymbolPointSize;
@end
