#include "voxtrel/platform/macos/overlay/BezierCanvas.h"

#import <AppKit/AppKit.h>

namespace voxtrel {
namespace {

NSRect toAppKit(const Rect& rect) {
  return NSMakeRect(rect.x, rect.y, rect.width, rect.height);
}

NSColor* toAppKit(const Color& color) {
  return [NSColor colorWithCalibratedRed:color.red
                                   green:color.green
                                    blue:color.blue
                                   alpha:color.alpha];
}

NSBezierPath* roundedRect(const Rect& rect, double radius) {
  return [NSBezierPath bezierPathWithRoundedRect:toAppKit(rect) xRadius:radius yRadius:radius];
}

}  // namespace

void BezierCanvas::fillRoundedRect(const Rect& rect, double radius, const Color& color) {
  [toAppKit(color) setFill];
  [roundedRect(rect, radius) fill];
}

void BezierCanvas::strokeRoundedRect(const Rect& rect, double radius, double lineWidth,
                                     const Color& color) {
  [toAppKit(color) setStroke];
  NSBezierPath* const path = roundedRect(rect, radius);
  path.lineWidth = lineWidth;
  [path stroke];
}

void BezierCanvas::fillOval(const Rect& rect, const Color& color) {
  [toAppKit(color) setFill];
  [[NSBezierPath bezierPathWithOvalInRect:toAppKit(rect)] fill];
}

void clipToRoundedRect(const Rect& rect, double radius) {
  [roundedRect(rect, radius) addClip];
}

}  // namespace voxtrel
