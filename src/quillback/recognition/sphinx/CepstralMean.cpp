#include "quillback/recognition/sphinx/CepstralMean.h"

#include <utility>

namespace voxtrel::quillback {

CepstralMean::CepstralMean(std::vector<float> prior) : prior_(std::move(prior)) {
  reset();
}

void CepstralMean::reset() {
  sum_.assign(prior_.size(), 0.0);
  frames_ = 0;
  mean_ = prior_;
}

void CepstralMean::add(std::span<const float> cepstrum) {
  frames_ += 1;
  for (std::size_t at = 0; at < prior_.size(); ++at) {
    sum_[at] += static_cast<double>(cepstrum[at]);
    mean_[at] = static_cast<float>((kPriorFrames * static_cast<double>(prior_[at]) + sum_[at]) /
                                   (kPriorFrames + frames_));
  }
}

}  // namespace voxtrel::quillback
