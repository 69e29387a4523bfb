#include <gtest/gtest.h>

#include <QImage>
#include <array>
#include <cmath>
#include <cstdlib>
#include <string>
#include <vector>

#include "support/Samples.h"
#include "voxtrel/overlay/FFTBarView.h"
#include "voxtrel/platform/kissfft/PlainVectorMath.h"
#include "voxtrel/platform/linux/overlay/PillPainter.h"

namespace voxtrel {
namespace {

constexpr Rect kFrame{0, 0, 90, 21};
// Blending is rounded differently by processors and versions of Qt.
constexpr int kTolerance = 3;

// All bars at different heights: a tone in each band, louder where the band is wider.
std::vector<float> chord() {
  struct Tone {
    double bin, bandBins, height;
  };
  constexpr std::array<Tone, 13> kTones = {{{1, 1, 0.5},
                                            {2, 1, 0.3},
                                            {3, 1, 0.6},
                                            {5, 3, 0.9},
                                            {8, 3, 0.4},
                                            {12, 5, 0.7},
                                            {18, 8, 0.2},
                                            {28, 12, 1.0},
                                            {43, 17, 0.8},
                                            {64, 25, 0.3},
                                            {95, 38, 0.5},
                                            {142, 56, 0.6},
                                            {212, 83, 0.1}}};
  std::vector<float> samples(512, 0.0F);
  for (const Tone& tone : kTones) {
    const auto one = testing::sineAtBin(tone.bin, tone.bandBins * tone.height);
    for (std::size_t n = 0; n < samples.size(); ++n) samples[n] += one[n];
  }
  return samples;
}

QImage picture(double scale) {
  const PlainVectorMath math{};
  FFTBarView view(kFrame, math);
  const std::vector<float> samples = chord();
  view.processAudio(testing::BufferOver(samples));
  const QSize size(static_cast<int>(std::lround(kFrame.width * scale)),
                   static_cast<int>(std::lround(kFrame.height * scale)));
  PillPainter painter(size, scale, view.cornerRadius());
  for (int frame = 0; frame < 8; ++frame) painter.paint([&](Canvas& canvas) { view.draw(canvas); });
  return painter.picture().convertToFormat(QImage::Format_ARGB32);
}

int farthestComponents(QRgb one, QRgb two) {
  if (qAlpha(one) == 0 && qAlpha(two) == 0) return 0;
  return std::max({std::abs(qAlpha(one) - qAlpha(two)), std::abs(qRed(one) - qRed(two)),
                   std::abs(qGreen(one) - qGreen(two)), std::abs(qBlue(one) - qBlue(two))});
}

struct GoldenPicture : ::testing::TestWithParam<double> {};

// Set VOXTREL_UPDATE_PICTURES in the environment to replace the pictures, then check them by eye.
TEST_P(GoldenPicture, IsPaintedPixelByPixel) {
  const QImage painted = picture(GetParam());
  const std::string name =
      GOLDEN_PICTURES "/pill-" + std::to_string(static_cast<int>(GetParam() * 100)) + ".png";
  if (std::getenv("VOXTREL_UPDATE_PICTURES") != nullptr) painted.save(name.c_str());

  const QImage golden = QImage(name.c_str()).convertToFormat(QImage::Format_ARGB32);
  ASSERT_EQ(golden.size(), painted.size()) << name;
  int wrong = 0;
  for (int y = 0; y < painted.height(); ++y) {
    for (int x = 0; x < painted.width(); ++x) {
      wrong += farthestComponents(painted.pixel(x, y), golden.pixel(x, y)) > kTolerance ? 1 : 0;
    }
  }
  EXPECT_EQ(wrong, 0) << "pixels differ from " << name;
}

INSTANTIATE_TEST_SUITE_P(AtScale, GoldenPicture, ::testing::Values(1.0, 1.5, 2.0));

TEST(PillPainter, LeavesTheCornersEmptyAndPaintsNothingOutsideThePill) {
  const QImage image = picture(2.0);
  for (const QPoint corner : {QPoint(0, 0), QPoint(179, 0), QPoint(0, 41), QPoint(179, 41)}) {
    EXPECT_EQ(qAlpha(image.pixel(corner)), 0);
  }
  EXPECT_EQ(qAlpha(image.pixel(90, 0)), 255) << "the edge is opaque";
  EXPECT_NEAR(qAlpha(image.pixel(90, 4)), 235, 1) << "the pill is slightly transparent";
}

// A background, and a bar and a dot that may change.
PillPainter::Draw pill(double red, double barHeight, double dot) {
  return [=](Canvas& canvas) {
    canvas.fillRoundedRect(kFrame, 10.5, {red, 0.1, 0.2, 0.9});
    canvas.strokeRoundedRect(kFrame, 10.5, 1.0, {0.2, red, 0.3, 1.0});
    canvas.fillRoundedRect({20, 2, 2, barHeight}, 1.0, {0.1, 0.8, 0.7, 0.5});
    canvas.fillOval({80, 8, dot, dot}, {0.9, 0.3, 0.4, 1.0});
  };
}

const PillPainter::Draw kNothing = [](Canvas&) {};

TEST(PillPainter, PaintsEachPictureAsIfItWereItsFirst) {
  PillPainter painter({90, 21}, 1.0, 10.5);
  for (const auto& draw :
       {pill(0.1, 5, 5), pill(0.1, 9, 5), pill(0.1, 9, 5), pill(0.1, 9, 3), pill(0.6, 9, 3),
        pill(0.6, 4, 3), pill(0.1, 4, 3), kNothing, pill(0.1, 4, 3)}) {
    painter.paint(draw);
    PillPainter another({90, 21}, 1.0, 10.5);
    another.paint(draw);
    EXPECT_EQ(painter.picture(), another.picture());
  }
}

TEST(PillPainter, TellsAroundWhichPixelsThePictureHasChanged) {
  PillPainter painter({90, 21}, 1.0, 10.5);
  EXPECT_EQ(painter.paint(pill(0.1, 5, 5)), QRect(0, 0, 90, 21)) << "the first picture";
  EXPECT_EQ(painter.paint(pill(0.1, 5, 5)), QRect());
  EXPECT_EQ(painter.paint(pill(0.1, 9, 5)), QRect(20, 6, 2, 5)) << "a bar from 2 to 11, not 7";
  EXPECT_EQ(painter.paint(pill(0.1, 9, 0)), QRect(80, 8, 5, 5)) << "a dot less";
  EXPECT_EQ(painter.paint(pill(0.1, 5, 5)), QRect(20, 6, 65, 7)) << "both";
  EXPECT_EQ(painter.paint(kNothing), QRect(0, 0, 90, 21));
  EXPECT_EQ(painter.paint(kNothing), QRect());
}

TEST(PillPainter, TellsNoChangeWhereShapesDifferByLessThanAPixelShows) {
  PillPainter painter({90, 21}, 1.0, 10.5);
  painter.paint(pill(0.1, 5, 5));
  EXPECT_EQ(painter.paint(pill(0.1, 5.0001, 5)), QRect());
}

// Speech, then silence: how many frames, and how many of their pixels, are new to the screen.
TEST(PillPainter, ChangesOnlyTheBarsAndOnlyWhileTheyMove) {
  const PlainVectorMath math{};
  FFTBarView view(kFrame, math);
  const PillPainter::Draw draw = [&](Canvas& canvas) { view.draw(canvas); };
  PillPainter painter({90, 21}, 1.0, view.cornerRadius());
  painter.paint(draw);
  const std::vector<float> samples = chord();
  view.processAudio(testing::BufferOver(samples));
  const QRect barsPlace(8, 3, 69, 15);
  int moving = 0;
  for (int frame = 0; frame < 60; ++frame) {
    if (frame == 30) view.clear();
    const QRect changed = painter.paint(draw);
    EXPECT_TRUE(changed.isEmpty() || barsPlace.contains(changed)) << frame;
    moving += changed.isEmpty() ? 0 : 1;
  }
  EXPECT_GT(moving, 20);
  EXPECT_LT(moving, 50) << "bars that stand still are painted";
  for (int frame = 0; frame < 60; ++frame) EXPECT_TRUE(painter.paint(draw).isEmpty()) << frame;
}

TEST(PillPainter, GivesAPixelShapeThatNarrowsTowardsTopAndBottom) {
  const PillPainter painter({90, 21}, 1.0, 10.5);
  const auto any = painter.pixels(1), half = painter.pixels(128);
  ASSERT_EQ(half.size(), 21U);
  EXPECT_EQ(half[10], QRect(0, 10, 90, 1));
  EXPECT_EQ(half.front().width(), half.back().width());
  EXPECT_LT(half.front().width(), 84);
  for (std::size_t row = 0; row < half.size(); ++row) {
    EXPECT_EQ(half[row].center().x(), 44) << row;
    EXPECT_TRUE(any[row].contains(half[row])) << row;
  }
  EXPECT_GT(any.front().width(), half.front().width());
}

}  // namespace
}  // namespace voxtrel
