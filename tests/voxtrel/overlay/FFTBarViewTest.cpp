#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "support/RecordingCanvas.h"
#include "support/Samples.h"
#include "voxtrel/overlay/FFTBarView.h"
#include "voxtrel/platform/kissfft/PlainVectorMath.h"

namespace voxtrel {
namespace {

using testing::BufferOver;
using ::testing::Each;
using testing::noise;
using testing::RecordingCanvas;
using testing::sineAtBin;

constexpr Rect kFrame{0, 0, 90, 21};
constexpr double kSpacing = 46.0 / 15.0;

struct FFTBarViewTest : ::testing::Test {
  const PlainVectorMath math{};
  FFTBarView view{kFrame, math};

  RecordingCanvas draw() {
    RecordingCanvas canvas;
    view.draw(canvas);
    return canvas;
  }

  std::vector<double> barHeights() {
    std::vector<double> heights;
    const RecordingCanvas canvas = draw();
    for (std::size_t i = 1; i < canvas.filled.size(); ++i) {
      heights.push_back(canvas.filled[i].rect.height);
    }
    return heights;
  }
};

void expectColor(const Color& color, double red, double green, double blue, double alpha) {
  EXPECT_NEAR(color.red, red, 1e-12);
  EXPECT_NEAR(color.green, green, 1e-12);
  EXPECT_NEAR(color.blue, blue, 1e-12);
  EXPECT_EQ(color.alpha, alpha);
}

TEST_F(FFTBarViewTest, PaintsThePillThenTheBarsThenTheDot) {
  EXPECT_EQ(draw().operations, "fs" + std::string(14, 'f') + "o");
}

TEST_F(FFTBarViewTest, PaintsADarkPillWithAnEdgeOverItsWholeBounds) {
  const RecordingCanvas canvas = draw();
  EXPECT_EQ(canvas.filled[0].rect, kFrame);
  EXPECT_EQ(canvas.filled[0].radius, 10.5);
  expectColor(canvas.filled[0].color, 0.1, 0.1, 0.2, 0.92);
  EXPECT_EQ(canvas.stroked[0].rect, kFrame);
  EXPECT_EQ(canvas.stroked[0].radius, 10.5);
  EXPECT_EQ(canvas.stroked[0].lineWidth, 1.0);
  expectColor(canvas.stroked[0].color, 0.18, 0.18, 0.31, 1.0);
  EXPECT_EQ(view.cornerRadius(), 10.5);
}

TEST_F(FFTBarViewTest, PlacesFourteenBarsFromTealToVioletAtRest) {
  const RecordingCanvas canvas = draw();
  for (int i = 0; i < 14; ++i) {
    const auto& bar = canvas.filled.at(static_cast<std::size_t>(i) + 1);
    EXPECT_NEAR(bar.rect.x, kSpacing + 5 + (kSpacing + 2) * i, 1e-12);
    EXPECT_EQ(bar.rect.width, 2.0);
    EXPECT_EQ(bar.rect.height, 1.5);
    EXPECT_EQ(bar.rect.y, 10.5 - 0.75);
    EXPECT_EQ(bar.radius, 1.0);
    const double t = i / 13.0;
    expectColor(bar.color, 0.48 * t, 0.83 - 0.54 * t, 0.67 + 0.33 * t, 1.0);
  }
  EXPECT_NEAR(canvas.filled[1].rect.x, 8.07, 0.005);
  EXPECT_NEAR(canvas.filled[14].rect.x + 2, 75.93, 0.005);
  expectColor(canvas.filled[14].color, 0.48, 0.29, 1.0, 1.0);
}

TEST_F(FFTBarViewTest, PutsTheDotEightPointsFromTheRightEdge) {
  const RecordingCanvas canvas = draw();
  EXPECT_EQ(canvas.ovals.at(0).rect, (Rect{79.5, 8, 5, 5}));
  expectColor(canvas.ovals[0].color, 0.91, 0.27, 0.38, 1.0);
}

TEST_F(FFTBarViewTest, DependsOnItsSizeAndNotOnItsPosition) {
  FFTBarView larger(Rect{50, 60, 180, 40}, math);
  RecordingCanvas canvas;
  larger.draw(canvas);
  EXPECT_EQ(canvas.filled[0].rect, (Rect{0, 0, 180, 40}));
  EXPECT_EQ(canvas.filled[0].radius, 20);
  const double spacing = (180.0 - 16 - 28) / 15;
  EXPECT_NEAR(canvas.filled[2].rect.x, spacing + 5 + (spacing + 2), 1e-12);
  EXPECT_EQ(canvas.filled[2].rect.y, 20 - 0.75);
  EXPECT_EQ(canvas.ovals[0].rect, (Rect{169.5, 17.5, 5, 5}));
}

TEST_F(FFTBarViewTest, GrowsABarFromTheMiddleWithItsLevel) {
  view.processAudio(BufferOver(sineAtBin(30)));  // band 8 holds bins 23 to 34
  const RecordingCanvas canvas = draw();
  const Rect bar = canvas.filled[9].rect;
  EXPECT_NEAR(bar.height, 15 * 0.55, 1e-5);
  EXPECT_NEAR(bar.midY(), 10.5, 1e-12);
}

TEST_F(FFTBarViewTest, NeverMakesABarHigherThanFifteenPoints) {
  view.processAudio(BufferOver(sineAtBin(30, 1000.0)));
  for (int frame = 0; frame < 60; ++frame) {
    for (const double height : barHeights()) EXPECT_LE(height, 15.0);
  }
  EXPECT_NEAR(barHeights()[8], 15.0, 1e-4);
}

TEST_F(FFTBarViewTest, MovesOneStepWithEachDrawnFrameOnly) {
  view.processAudio(BufferOver(sineAtBin(30)));
  view.processAudio(BufferOver(sineAtBin(30)));
  EXPECT_NEAR(barHeights()[8], 15 * 0.55, 1e-5);
  EXPECT_NEAR(barHeights()[8], 15 * 0.7975, 1e-5);
}

TEST_F(FFTBarViewTest, SinksStepByStepWhenCleared) {
  view.processAudio(BufferOver(sineAtBin(30)));
  draw();
  view.clear();
  EXPECT_THAT(view.bandEnergy(), Each(0.0F));
  EXPECT_NEAR(barHeights()[8], 15 * 0.55 * 0.85, 1e-5);
  for (int frame = 0; frame < 60; ++frame) draw();
  EXPECT_THAT(barHeights(), Each(1.5));
}

TEST_F(FFTBarViewTest, SinksToTheMinimumHeightInSilence) {
  view.processAudio(BufferOver(noise(1)));
  for (int frame = 0; frame < 30; ++frame) draw();
  const std::vector<float> silence(512, 1e-9F);
  view.processAudio(BufferOver(silence));
  EXPECT_LT(view.bandEnergy()[0], 1e-6F);
  EXPECT_GT(view.bandEnergy()[0], 0.0F) << "tiny values pass unscaled";
  for (int frame = 0; frame < 60; ++frame) draw();
  EXPECT_THAT(barHeights(), Each(1.5));
}

TEST_F(FFTBarViewTest, ShowsAQuietVoiceAsHighAsALoudOne) {
  view.processAudio(BufferOver(noise(3, 1.0)));
  const BandLevels loud = view.bandEnergy();
  view.processAudio(BufferOver(noise(3, 0.001)));
  const BandLevels quiet = view.bandEnergy();
  EXPECT_EQ(*std::max_element(loud.begin(), loud.end()), 1.0F);
  EXPECT_EQ(*std::max_element(quiet.begin(), quiet.end()), 1.0F);
  for (std::size_t i = 0; i < loud.size(); ++i) EXPECT_NEAR(quiet[i], loud[i], 1e-5F);
}

TEST_F(FFTBarViewTest, ShowsTheFirstTwoBarsAtOneHeightAtTheUsualSampleRates) {
  for (const double rate : {44100.0, 48000.0}) {
    view.processAudio(BufferOver(noise(9), rate));
    EXPECT_EQ(view.bandEnergy()[0], view.bandEnergy()[1]);
    EXPECT_GT(view.bandEnergy()[0], 0.0F);
  }
}

TEST_F(FFTBarViewTest, UsesTheFirstChannelOnly) {
  const std::vector<float> first = sineAtBin(30), second = noise(1, 100.0);
  view.processAudio(BufferOver({first.data()}, 512, 48000));
  const BandLevels alone = view.bandEnergy();
  view.processAudio(BufferOver(second));
  view.processAudio(BufferOver({first.data(), second.data()}, 512, 48000));
  EXPECT_EQ(view.bandEnergy(), alone);
}

TEST_F(FFTBarViewTest, UsesTheFirst512FramesOnly) {
  const std::vector<float> samples = noise(2, 1.0, 4096);
  view.processAudio(BufferOver(std::span(samples).first(512)));
  const BandLevels block = view.bandEnergy();
  view.processAudio(BufferOver(samples));
  EXPECT_EQ(view.bandEnergy(), block);
}

TEST_F(FFTBarViewTest, KeepsItsLevelsWhenABufferHasNoFloatSamples) {
  view.processAudio(BufferOver(sineAtBin(30)));
  const BandLevels before = view.bandEnergy();
  view.processAudio(AudioBuffer{{}, 512, 48000.0});
  view.processAudio(AudioBuffer{{}, 512, 0.0});
  EXPECT_EQ(view.bandEnergy(), before);
  for (int frame = 0; frame < 60; ++frame) draw();
  EXPECT_NEAR(barHeights()[8], 15.0, 1e-4) << "the bars go to the last levels";
}

TEST_F(FFTBarViewTest, TreatsABufferWithoutFramesAsSilence) {
  view.processAudio(BufferOver(sineAtBin(30)));
  view.processAudio(BufferOver(std::span<const float>()));
  EXPECT_THAT(view.bandEnergy(), Each(0.0F));
}

TEST_F(FFTBarViewTest, DrawsOnOneThreadWhileAnotherAnalyses) {
  std::thread capture([this] {
    for (unsigned block = 0; block < 500; ++block) view.processAudio(BufferOver(noise(block)));
  });
  for (int frame = 0; frame < 500; ++frame) {
    for (const double height : barHeights()) EXPECT_LE(height, 15.0);
  }
  capture.join();
}

TEST(FFTBarViewDeathTest, EndsTheProcessAtASampleRateOfZero) {
  const PlainVectorMath math{};
  FFTBarView view(kFrame, math);
  const std::vector<float> samples = noise(1);
  EXPECT_DEATH(view.processAudio(BufferOver(samples, 0.0)), "no frequency bins");
}

}  // namespace
}  // namespace voxtrel
