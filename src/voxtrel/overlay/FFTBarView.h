#pragma once

#include <mutex>

#include "voxtrel/overlay/SpectrumAnalysis.h"
#include "voxtrel/platform/Canvas.h"
#include "voxtrel/platform/Microphone.h"

namespace voxtrel {

/// Fourteen spectrum bars and a red dot in a dark pill.
/// Thread: `processAudio` on the capture's thread, everything else on the main thread.
/// Owns: the analysis.  Borrows: VectorMath (must outlive this).
class FFTBarView {
 public:
  static constexpr int kBarCount = kBandCount;
  static constexpr double kBarWidth = 2.0;  // points
  static constexpr std::size_t kFftSize = RealFft::kSize;

  /// If `math` cannot make a transform, the bars show the samples themselves.
  FFTBarView(const Rect& frame, const VectorMath& math);

  /// Sets the levels from the buffer's first channel. Ignores a buffer without float samples.
  void processAudio(const AudioBuffer& buffer);

  /// Sets all levels to 0, so that the bars sink.
  void clear();

  /// Moves the bars one step towards the latest levels, then paints everything.
  void draw(Canvas& canvas);

  /// Radius at which the view's corners are cut off.
  double cornerRadius() const { return bounds_.height * 0.5; }

  /// The latest levels.
  BandLevels bandEnergy() const;

 private:
  void setBandEnergy(const BandLevels& levels);
  void drawBackground(Canvas& canvas) const;
  void drawBars(Canvas& canvas) const;
  void drawDot(Canvas& canvas) const;

  Rect bounds_;
  BandLevels bandEnergy_{};  // guarded by lock_
  BandLevels smoothed_{};
  mutable std::mutex lock_;
  SpectrumAnalysis analysis_;
};

}  // namespace voxtrel
