#include "quillback/recognition/speech/PieceCutter.h"

#include <algorithm>
#include <iterator>
#include <numeric>

namespace voxtrel::quillback {

std::optional<std::vector<float>> PieceCutter::add(float probability) {
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

bool PieceCutter::hasSpeech(Frames frames) {
  std::size_t run = 0;
  for (const float probability : frames) {
    run = probability < VoiceDetector::kSpeech ? 0 : run + 1;
    if (run >= kMinSpeechFrames) return true;
  }
  return false;
}

std::size_t PieceCutter::voicedFrames(Frames frames) {
  return static_cast<std::size_t>(std::ranges::count_if(
      frames, [](float probability) { return probability >= VoiceDetector::kSpeech; }));
}

std::size_t PieceCutter::longestPause(Frames frames) {
  std::optional<std::size_t> lastVoiced;
  std::size_t longest = 0;
  std::size_t middle = 0;
  for (std::size_t at = 0; at < frames.size(); ++at) {
    if (frames[at] < VoiceDetector::kSpeech) continue;
    const std::size_t pause = lastVoiced ? at - *lastVoiced - 1 : 0;
    if (pause > longest) {
      longest = pause;
      middle = at - (pause + 1) / 2;
    }
    lastVoiced = at;
  }
  return middle;
}

std::vector<float> PieceCutter::cutAfter(std::size_t count) {
  const auto end = std::next(probabilities_.begin(), static_cast<std::ptrdiff_t>(count));
  std::vector<float> piece(probabilities_.begin(), end);
  probabilities_.erase(probabilities_.begin(), end);
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
