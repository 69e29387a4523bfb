#pragma once

#include <memory>
#include <mutex>

#include "voxtrel/overlay/SpectrumAnalysis.h"
#include "voxtrel/platform/Canvas.h"
#include "voxtrel/platform/Geometry.h"
#include "voxtrel/platform/Microphone.h"

namespace voxtrel {

/// Fourteen spectrum bars and a red dot in a dark pill.
/// Thread: `processAudio` on the capture's thread, all else on the main thread.
/// Owns: the analysis.
class FFTBarView {
 public:
  static constexpr int kBarCount = kBandCount;
  static constexpr double kBarWidth = 2.0;  // points
  static constexpr std::size_t kFftSize = RealFft::kSize;

  /// `fftSetup` may be null: then the bars show the samples themselves.
  FFTBarView(const Rect& frame, std::unique_ptr<RealFft> fftSetup);

  /// Takes the levels of the buffer's first channel. A buffer without float samples changes
  /// nothing.
  void processAudio(const AudioBuffer& buffer);

  /// Moves the bars one step towards the latest levels and paints them.
  void draw(Canvas& canvas);

  /// Everything outside this radius is cut off the view's corners.
  double cornerRadius() const { return bounds_.height * 0.5; }

  BandLevels bandEnergy() const;
  const BandLevels& smoothed() const { return smoothed_; }

 private:
  void drawBackground(Canvas& canvas) const;
  void drawBars(Canvas& canvas) const;
  void drawDot(Canvas& canvas) const;

  Rect bounds_;
  BandLevels bandEnergy_{};
  BandLevels smoothed_{};
  mutable std::mutex lock_;  // guards bandEnergy_ and nothing else
  SpectrumAnalysis analysis_;
};

}  // namespace voxtrel
