#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "support/Samples.h"
#include "support/macos/Controls.h"
#include "support/macos/Growth.h"
#include "voxtrel/overlay/FFTBarView.h"
#include "voxtrel/platform/macos/overlay/BezierCanvas.h"
#include "voxtrel/platform/macos/vdsp/AccelerateMath.h"

namespace voxtrel::testing {
namespace {

constexpr Rect kFrame{0, 0, 90, 21};
constexpr Color kTeal{0, 0.83, 0.67, 1};
constexpr Color kNothing{0, 0, 0, 0};
constexpr Color kPill{0.1, 0.1, 0.2, 0.92};

/// What `draw` paints on an empty picture of 90 by 21 points, at `scale` pixels a point.
NSBitmapImageRep* painted(int scale, const std::function<void(Canvas&)>& draw) {
  const NSRect all = NSMakeRect(0, 0, 90 * scale, 21 * scale);
  auto* const image = [[NSImage alloc] initWithSize:all.size];
  [image lockFocus];
  NSAffineTransform* const transform = [NSAffineTransform transform];
  [transform scaleBy:scale];
  [transform concat];
  BezierCanvas canvas;
  draw(canvas);
  [transform invert];
  [transform concat];
  auto* const picture = [[NSBitmapImageRep alloc] initWithFocusedViewRect:all];
  [image unlockFocus];
  return picture;
}

/// The colour at a point of the picture; y grows upwards, as in a view.
void expectColor(NSBitmapImageRep* picture, double x, double y, const Color& expected) {
  const double scale = static_cast<double>(picture.pixelsWide) / kFrame.width;
  const auto pixel = [&](double points) { return static_cast<NSInteger>(points * scale); };
  NSColor* const color = [picture colorAtX:pixel(x) y:picture.pixelsHigh - 1 - pixel(y)];
  constexpr double kRounding = 0.02;
  const std::string where = std::to_string(x) + ", " + std::to_string(y);
  EXPECT_NEAR(color.alphaComponent, expected.alpha, kRounding) << where;
  if (expected.alpha == 0) return;
  EXPECT_NEAR(color.redComponent, expected.red, kRounding) << where;
  EXPECT_NEAR(color.greenComponent, expected.green, kRounding) << where;
  EXPECT_NEAR(color.blueComponent, expected.blue, kRounding) << where;
}

class BezierCanvasTest : public ::testing::TestWithParam<int> {
 protected:
  static NSBitmapImageRep* paint(const std::function<void(Canvas&)>& draw) {
    return painted(GetParam(), draw);
  }
};

TEST_P(BezierCanvasTest, FillsARoundedRectangle) {
  NSBitmapImageRep* const picture = paint([](Canvas& canvas) {
    canvas.fillRoundedRect({10, 4, 40, 12}, 6, kTeal);
  });
  expectColor(picture, 30, 10, kTeal);
  expectColor(picture, 48, 10, kTeal);
  expectColor(picture, 10, 4, kNothing);
  expectColor(picture, 60, 10, kNothing);
  expectColor(picture, 30, 2, kNothing);
  expectColor(picture, 30, 18, kNothing);
}

TEST_P(BezierCanvasTest, CentresALineOnTheEdge) {
  NSBitmapImageRep* const picture = paint([](Canvas& canvas) {
    canvas.strokeRoundedRect({10, 4, 40, 12}, 0, 4, kTeal);
  });
  expectColor(picture, 8.5, 10, kTeal);
  expectColor(picture, 11, 10, kTeal);
  expectColor(picture, 14, 10, kNothing);
  expectColor(picture, 6, 10, kNothing);
}

TEST_P(BezierCanvasTest, FillsAnOval) {
  NSBitmapImageRep* const picture = paint([](Canvas& canvas) {
    canvas.fillOval({20, 0, 20, 20}, kTeal);
  });
  expectColor(picture, 30, 10, kTeal);
  expectColor(picture, 21, 1, kNothing);
  expectColor(picture, 38.5, 18.5, kNothing);
}

TEST_P(BezierCanvasTest, PaintsOverWhatIsThere) {
  NSBitmapImageRep* const picture = paint([](Canvas& canvas) {
    canvas.fillRoundedRect({0, 0, 90, 21}, 0, {1, 1, 1, 1});
    canvas.fillRoundedRect({0, 0, 90, 21}, 0, {0, 0, 0, 0.5});
  });
  expectColor(picture, 45, 10, {0.5, 0.5, 0.5, 1});
}

TEST_P(BezierCanvasTest, ClipsToARoundedRectangle) {
  NSBitmapImageRep* const picture = paint([](Canvas& canvas) {
    clipToRoundedRect(kFrame, 10.5);
    canvas.fillRoundedRect(kFrame, 0, kTeal);
  });
  expectColor(picture, 45, 10, kTeal);
  expectColor(picture, 0.5, 0.5, kNothing);
  expectColor(picture, 89, 20, kNothing);
}

TEST_P(BezierCanvasTest, DrawsThePill) {
  const AccelerateMath math;
  FFTBarView view(kFrame, math);
  const std::vector<float> samples = sineAtBin(30);
  view.processAudio(BufferOver(samples));
  NSBitmapImageRep* picture = nil;
  for (int frame = 0; frame < 20; ++frame) {
    picture = paint([&](Canvas& canvas) {
      clipToRoundedRect(kFrame, view.cornerRadius());
      view.draw(canvas);
    });
  }
  keepPicture(picture, "pill-" + std::to_string(GetParam()));
  expectColor(picture, 82, 10, {0.91, 0.27, 0.38, 1});
  expectColor(picture, 87, 10, kPill);
  // Bar 8 is 15 points high; its middle is at 8.07 + 8 * 5.07 + 1.
  constexpr double kBarEight = 49.6;
  const double t = 8.0 / 13.0;
  const Color bar{0.48 * t, 0.83 - 0.54 * t, 0.67 + 0.33 * t, 1};
  expectColor(picture, kBarEight, 10.5, bar);
  expectColor(picture, kBarEight, 16, bar);
  expectColor(picture, kBarEight, 5, bar);
  expectColor(picture, kBarEight, 19.2, kPill);
}

TEST_P(BezierCanvasTest, KeepsNothingOfAThousandFrames) {
  paint([](Canvas& canvas) {
    expectNoGrowth([&] {
      [NSGraphicsContext saveGraphicsState];
      clipToRoundedRect(kFrame, 10.5);
      canvas.fillRoundedRect(kFrame, 6, kPill);
      canvas.strokeRoundedRect(kFrame, 6, 1, kTeal);
      canvas.fillOval({20, 0, 20, 20}, kTeal);
      [NSGraphicsContext restoreGraphicsState];
    });
  });
}

INSTANTIATE_TEST_SUITE_P(Scales, BezierCanvasTest, ::testing::Values(1, 2));

}  // namespace
}  // namespace voxtrel::testing
