#pragma once

#import <AppKit/AppKit.h>

#include <string>
#include <vector>

/// A read-only log on a rounded background: shows the newest line, scrolls back to all others, and lets
/// the user select and copy.
/// Thread: the main thread.  Owns: a copy of the lines.
@interface VoxtrelLogView : NSView
/// `lineSpacing` between two lines and `cornerRadius` of the background, in points.
- (instancetype)initWithFrame:(NSRect)frame
                  lineSpacing:(CGFloat)lineSpacing
                 cornerRadius:(CGFloat)cornerRadius;
/// Shows `lines`, which must begin with the lines of the last call unless `clear` was called.
- (void)follow:(const std::vector<std::string>&)lines;
- (void)clear;
@end
