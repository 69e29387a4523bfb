#include "quillback/recognition/speech/PieceCutter.h"

#include <algorithm>
#include <iterator>
#include <numeric>

namespace voxtrel::quillback {

std::optional<PieceCutter::Piece> PieceCutter::add(float probability) {
  probabilities_.push_back(probability);
  silentFrames_ = probability < VoiceDetector::kSpeech ? silentFrames_ + 1 : 0;
  const std::size_t count = probabilities_.size();
  if (count >= kMinPieceFrames && silentFrames_ >= kPauseFrames) {
    return cutAfter(count - silentFrames_ / 2);
  }
  if (count >= maxFrames_) return cutAfter(leastProbable());
  return std::nullopt;
}

void PieceCutter::reset() {
  probabilities_.clear();
  silentFrames_ = 0;
}

bool PieceCutter::hasSpeech(std::span<const float> probabilities) {
  std::size_t run = 0;
  for (const float probability : probabilities) {
    run = probability < VoiceDetector::kSpeech ? 0 : run + 1;
    if (run >= kMinSpeechFrames) return true;
  }
  return false;
}

PieceCutter::Piece PieceCutter::judge(std::span<const float> probabilities) {
  Piece piece{probabilities.size(), hasSpeech(probabilities)};
  std::size_t lastVoiced = 0;
  std::size_t longest = 0;
  for (std::size_t at = 0; at < probabilities.size(); ++at) {
    if (probabilities[at] < VoiceDetector::kSpeech) continue;
    if (piece.voicedFrames > 0 && at - lastVoiced - 1 > longest) {
      longest = at - lastVoiced - 1;
      piece.split = lastVoiced + 1 + longest / 2;
    }
    lastVoiced = at;
    ++piece.voicedFrames;
  }
  return piece;
}

PieceCutter::Piece PieceCutter::cutAfter(std::size_t count) {
  const Piece piece = judge(std::span<const float>(probabilities_).first(count));
  probabilities_.erase(probabilities_.begin(),
                       std::next(probabilities_.begin(), static_cast<std::ptrdiff_t>(count)));
  silentFrames_ = std::min(silentFrames_, probabilities_.size());
  return piece;
}

/// The middle of the frames between which speech is least probable, in the later half of the piece.
std::size_t PieceCutter::leastProbable() const {
  constexpr std::size_t kWidth = 6;
  const auto sumFrom = [this](std::size_t at) {
    const auto first = std::next(probabilities_.begin(), static_cast<std::ptrdiff_t>(at));
    return std::accumulate(first, std::next(first, kWidth), 0.0F);
  };
  std::size_t best = probabilities_.size() / 2;
  for (std::size_t at = best; at + kWidth <= probabilities_.size(); ++at) {
    if (sumFrom(at) <= sumFrom(best)) best = at;
  }
  return best + kWidth / 2;
}

}  // namespace voxtrel::quillback
