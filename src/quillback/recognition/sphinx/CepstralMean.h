#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace voxtrel::quillback {

/// The mean of an utterance's cepstra so far, which is subtracted to remove the character of voice
/// and microphone. It starts from the model's mean, weighted like kPriorFrames frames of speech.
/// The mean of the whole utterance would be better, but is known only at its end.
/// Thread: one.
class CepstralMean {
 public:
  /// Half a second. Of 10, 25 and 50 frames, 50 got most words of the benchmark's sentences right.
  static constexpr double kPriorFrames = 50;

  explicit CepstralMean(std::vector<float> prior);

  /// Starts again from the prior.
  void reset();
  /// `cepstrum` has as many values as the prior.
  void add(std::span<const float> cepstrum);
  const std::vector<float>& mean() const { return mean_; }

 private:
  const std::vector<float> prior_;
  std::vector<double> sum_;
  double frames_ = 0;
  std::vector<float> mean_;
};

}  // namespace voxtrel::quillback
