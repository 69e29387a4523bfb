#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

#include "quillback/ports/Microphone.h"
#include "quillback/recognition/speech/SpeechModel.h"

namespace voxtrel::quillback {

/// How many of the detector's frames are in this time.
constexpr std::size_t speechFrames(double seconds) {
  return static_cast<std::size_t>(seconds * kSampleRateHz / VoiceDetector::kFrameSamples);
}

/// Cuts speech into pieces at pauses while it is spoken, by each frame's probability of speech.
/// Thread: one.
class PieceCutter {
 public:
  /// Shorter pieces lose words at their ends: recognising pieces of 8 s made 1 % more word errors.
  static constexpr std::size_t kMinPieceFrames = speechFrames(15.0);
  /// A pause. Shorter ones are often within a sentence.
  static constexpr std::size_t kPauseFrames = speechFrames(0.4);
  /// Speech shorter than this is a click or a breath.
  static constexpr std::size_t kMinSpeechFrames = speechFrames(0.1);

  /// No piece is longer than `maxFrames`; without a pause it is cut where speech is least probable.
  explicit PieceCutter(std::size_t maxFrames) : maxFrames_(maxFrames) {}

  /// Each frame's probability of speech.
  using Frames = std::span<const float>;

  /// Takes the next frame. Returns the frames of the piece that ends within those taken, if one does; the
  /// rest begins the next piece.
  std::optional<std::vector<float>> add(float probability);
  /// Starts with no frames.
  void reset();
  /// All frames of the piece that has not ended.
  [[nodiscard]] Frames rest() const { return probabilities_; }
  /// Whether there is more than a click.
  static bool hasSpeech(Frames frames);
  /// How many frames are probably speech.
  static std::size_t voicedFrames(Frames frames);
  /// A frame in the middle of the longest pause between speech; 0: there is none.
  static std::size_t longestPause(Frames frames);

 private:
  std::vector<float> cutAfter(std::size_t count);
  [[nodiscard]] std::size_t leastProbable() const;

  const std::size_t maxFrames_;
  std::vector<float> probabilities_;  ///< of the piece that has not ended
  std::size_t silentFrames_ = 0;      ///< at its end
};

}  // namespace voxtrel::quillback
