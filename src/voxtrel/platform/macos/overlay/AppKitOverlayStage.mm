#include "voxtrel/platform/macos/overlay/AppKitOverlayStage.h"

#import <AppKit/AppKit.h>

#include <utility>

#include "voxtrel/platform/macos/overlay/BezierCanvas.h"

using voxtrel::OverlayWindow;

/// Shows what a function paints, clipped to rounded corners.
/// Thread: the main thread.
@interface VoxtrelOverlayView : NSView
- (void)setCornerRadius:(double)cornerRadius draw:(OverlayWindow::Draw)draw;
@end

@implementation VoxtrelOverlayView {
  double cornerRadius_;
  OverlayWindow::Draw draw_;
}

- (void)setCornerRadius:(double)cornerRadius draw:(OverlayWindow::Draw)draw {
  cornerRadius_ = cornerRadius;
  draw_ = std::move(draw);
  self.needsDisplay = YES;
}

- (BOOL)isOpaque {
  return NO;
}

- (void)drawRect:(NSRect)__unused dirtyRect {
  if (!draw_) return;
  voxtrel::clipToRoundedRect({0, 0, self.bounds.size.width, self.bounds.size.height},
                             cornerRadius_);
  voxtrel::BezierCanvas canvas;
  draw_(canvas);
}

@end

/// A window that never takes the keyboard.
/// Thread: the main thread.
@interface VoxtrelOverlayWindow : NSWindow
@end

@implementation VoxtrelOverlayWindow

- (BOOL)canBecomeKeyWindow {
  return NO;
}

- (BOOL)canBecomeMainWindow {
  return NO;
}

@end

namespace voxtrel {
namespace {

Rect fromAppKit(NSRect rect) {
  return {rect.origin.x, rect.origin.y, rect.size.width, rect.size.height};
}

NSWindow* makeFloatingWindow(const Rect& rect, NSView* content) {
  auto* const window = [[VoxtrelOverlayWindow alloc]
      initWithContentRect:NSMakeRect(rect.x, rect.y, rect.width, rect.height)
                styleMask:NSWindowStyleMaskBorderless
                  backing:NSBackingStoreBuffered
                    defer:NO];
  window.releasedWhenClosed = NO;
  window.level = NSFloatingWindowLevel;
  window.opaque = NO;
  window.backgroundColor = NSColor.clearColor;
  window.hasShadow = YES;
  window.ignoresMouseEvents = YES;
  window.collectionBehavior =
      NSWindowCollectionBehaviorCanJoinAllSpaces | NSWindowCollectionBehaviorStationary;
  window.contentView = content;
  return window;
}

/// A floating window, on the screen until it is destroyed.
/// Thread: the main thread.  Owns: the native window and its view.
class AppKitOverlayWindow final : public OverlayWindow {
 public:
  explicit AppKitOverlayWindow(const Rect& rect)
      : view_([[VoxtrelOverlayView alloc] initWithFrame:NSMakeRect(0, 0, rect.width, rect.height)]),
        window_(makeFloatingWindow(rect, view_)) {}
  AppKitOverlayWindow(const AppKitOverlayWindow&) = delete;
  AppKitOverlayWindow& operator=(const AppKitOverlayWindow&) = delete;

  /// AppKit may hold the view longer, so it forgets what to draw.
  ~AppKitOverlayWindow() override {
    [view_ setCornerRadius:0 draw:nullptr];
    [window_ orderOut:nil];
  }

  void setContent(double cornerRadius, Draw draw) override {
    [view_ setCornerRadius:cornerRadius draw:std::move(draw)];
  }
  void orderFrontRegardless() override { [window_ orderFrontRegardless]; }
  void setNeedsDisplay() override {
    if (window_.isVisible) view_.needsDisplay = YES;
  }

 private:
  VoxtrelOverlayView* const view_;
  NSWindow* const window_;
};

}  // namespace

std::optional<Rect> AppKitOverlayStage::mainScreenFrame() {
  NSScreen* const screen = NSScreen.mainScreen;
  if (screen == nil) return {};
  return fromAppKit(screen.frame);
}

std::vector<Rect> AppKitOverlayStage::screenFrames() {
  std::vector<Rect> frames;
  for (NSScreen* screen in NSScreen.screens) frames.push_back(fromAppKit(screen.frame));
  return frames;
}

std::unique_ptr<OverlayWindow> AppKitOverlayStage::makeWindow(const Rect& contentRect) {
  return std::make_unique<AppKitOverlayWindow>(contentRect);
}

}  // namespace voxtrel
