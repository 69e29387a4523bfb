#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

#include "voxtrel/platform/linux/overlay/RoundedFill.h"

namespace voxtrel {
namespace {

constexpr Color kTeal{0.0, 0.83, 0.67, 1.0};
constexpr Color kGlass{0.9, 0.3, 0.4, 0.5};
constexpr QRgb kGround = 0xEB18182F;  // premultiplied
constexpr double kWidth = 12, kHeight = 21;
constexpr int kTolerance = 3;  // of 255

QImage image(double scale, QRgb pixel) {
  QImage result(static_cast<int>(std::lround(kWidth * scale)),
                static_cast<int>(std::lround(kHeight * scale)),
                QImage::Format_ARGB32_Premultiplied);
  for (int y = 0; y < result.height(); ++y) {
    auto* const row = reinterpret_cast<QRgb*>(result.scanLine(y));
    std::fill_n(row, result.width(), pixel);
  }
  return result;
}

constexpr int kFiner = 8;

QRgb mixedPixel(const QImage& fine, int left, int top) {
  std::array<int, 4> sums{};
  for (int y = top; y < top + kFiner; ++y) {
    const auto* const row = reinterpret_cast<const QRgb*>(fine.constScanLine(y));
    for (int x = left; x < left + kFiner; ++x) {
      sums[0] += qRed(row[x]);
      sums[1] += qGreen(row[x]);
      sums[2] += qBlue(row[x]);
      sums[3] += qAlpha(row[x]);
    }
  }
  for (int& sum : sums) sum = (sum + kFiner * kFiner / 2) / (kFiner * kFiner);
  return qRgba(sums[0], sums[1], sums[2], sums[3]);
}

// What QPainter makes of it with pixels of an eighth, each eight by eight of them mixed.
QImage painted(double scale, const Rect& rect, double radius, const Color& color) {
  QImage fine(static_cast<int>(std::lround(kWidth * scale)) * kFiner,
              static_cast<int>(std::lround(kHeight * scale)) * kFiner,
              QImage::Format_ARGB32_Premultiplied);
  fine.fill(kGround);
  QPainter painter(&fine);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.scale(scale * kFiner, scale * kFiner);
  painter.setPen(Qt::NoPen);
  painter.setBrush(QColor::fromRgbF(static_cast<float>(color.red), static_cast<float>(color.green),
                                    static_cast<float>(color.blue),
                                    static_cast<float>(color.alpha)));
  painter.drawRoundedRect(QRectF(rect.x, rect.y, rect.width, rect.height), radius, radius);
  painter.end();
  QImage mixed = image(scale, 0);
  for (int y = 0; y < mixed.height(); ++y) {
    auto* const row = reinterpret_cast<QRgb*>(mixed.scanLine(y));
    for (int x = 0; x < mixed.width(); ++x) row[x] = mixedPixel(fine, x * kFiner, y * kFiner);
  }
  return mixed;
}

int greatestDifference(const QImage& one, const QImage& other) {
  int greatest = 0;
  for (qsizetype i = 0; i < one.sizeInBytes(); ++i) {
    greatest = std::max(greatest, std::abs(int{one.constBits()[i]} - int{other.constBits()[i]}));
  }
  return greatest;
}

struct RoundedFillAtScale : ::testing::TestWithParam<double> {
  int differenceOf(const Rect& rect, double radius, const Color& color) {
    const double scale = GetParam();
    QImage target = image(scale, kGround);
    RoundedFill fill(scale, image(scale, 0xFF000000));
    fill.fillRoundedRect(target, rect, radius, color);
    return greatestDifference(target, painted(scale, rect, radius, color));
  }
};

TEST_P(RoundedFillAtScale, PaintsBarsAsAFinePictureShowsThem) {
  int greatest = 0;
  for (int bar = 0; bar < 14; ++bar) {
    const double x = 3 + (46.0 / 15 + 2) * bar - std::floor((46.0 / 15 + 2) * bar);
    for (double height = 1.5; height <= 15; height += 1.13) {
      const Rect rect{x, 10.5 - height / 2, 2, height};
      greatest = std::max(greatest, differenceOf(rect, 1, kTeal));
    }
  }
  EXPECT_LE(greatest, kTolerance);
}

TEST_P(RoundedFillAtScale, PaintsTheDotAsAFinePictureShowsIt) {
  EXPECT_LE(differenceOf({3.5, 8, 5, 5}, 2.5, kTeal), kTolerance);
  EXPECT_LE(differenceOf({3.3, 7.9, 5, 5}, 2.5, kGlass), kTolerance);
}

TEST_P(RoundedFillAtScale, PaintsSharpAndWideCornersAsAFinePictureShowsThem) {
  EXPECT_LE(differenceOf({1, 3, 8.25, 6.5}, 0, kTeal), kTolerance);
  EXPECT_LE(differenceOf({1.1, 3.3, 9.7, 15.2}, 4, kTeal), kTolerance);
  EXPECT_LE(differenceOf({0, 0, 12, 21}, 6, kGlass), kTolerance);
}

TEST_P(RoundedFillAtScale, LeavesOutWhatLiesOutsideThePicture) {
  EXPECT_LE(differenceOf({-5, -4, 10, 12}, 3, kTeal), kTolerance);
  EXPECT_LE(differenceOf({8, 15, 10, 12}, 3, kTeal), kTolerance);
  EXPECT_EQ(differenceOf({15, 5, 10, 5}, 3, kTeal), 0);
  EXPECT_EQ(differenceOf({5, 25, 10, 5}, 3, kTeal), 0);
  EXPECT_EQ(differenceOf({-15, -25, 10, 5}, 3, kTeal), 0);
  EXPECT_EQ(differenceOf({4, 10, 0, 0}, 3, kTeal), 0);
}

INSTANTIATE_TEST_SUITE_P(AtScale, RoundedFillAtScale, ::testing::Values(1.0, 1.5, 2.0));

TEST(RoundedFill, PaintsOnlyWithinTheClip) {
  QImage target = image(1, 0), clip = image(1, 0);
  clip.setPixel(5, 10, 0xFF000000);
  clip.setPixel(6, 10, 0x80000000);
  RoundedFill(1, clip).fillRoundedRect(target, {2, 5, 8, 10}, 1, {1, 1, 1, 1});
  QImage expected = image(1, 0);
  expected.setPixel(5, 10, 0xFFFFFFFF);
  expected.setPixel(6, 10, qPremultiply(0x80FFFFFF));
  EXPECT_EQ(target, expected);
}

TEST(RoundedFill, KeepsWhatIsBeneathWhereTheClipIsSeeThrough) {
  // White that the clip has halved already stays white.
  const QImage ground = image(1, qPremultiply(0x80FFFFFF));
  QImage target = ground;
  RoundedFill(1, image(1, 0x80000000)).fillOval(target, {2, 5, 8, 10}, {1, 1, 1, 0.5});
  EXPECT_LE(greatestDifference(target, ground), 1);
}

}  // namespace
}  // namespace voxtrel
