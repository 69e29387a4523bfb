#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace voxtrel::quillback {

/// The mean of an utterance's cepstra as far as it has been heard, which takes the voice's and the
/// microphone's own colour out of the features. It starts from the model's mean, which counts as much
/// as kPriorFrames of speech: the mean of the whole utterance would be better, but is known only when
/// it is over.
/// Thread: one.
class CepstralMean {
 public:
  /// Half a second; of 10, 25 and 50 frames the one with which most words of the benchmark's sentences
  /// were right.
  static constexpr double kPriorFrames = 50;

  explicit CepstralMean(std::vector<float> prior);

  /// Forgets what was heard.
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
