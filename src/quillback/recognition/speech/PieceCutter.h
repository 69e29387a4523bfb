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

  struct Piece {
    std::size_t frames = 0;  ///< from the end of the piece before
    bool hasSpeech = false;
    std::size_t voicedFrames = 0;  ///< that are probably speech
    std::size_t split = 0;  ///< a frame within the longest pause between words; 0: there is none
  };

  /// Takes the next frame. Returns the piece that ends within the frames taken, if one does; the rest
  /// begins the next piece.
  std::optional<Piece> add(float probability);
  /// Starts with no frames.
  void reset();
  /// All frames of the piece that has not ended.
  [[nodiscard]] Piece rest() const { return judge(probabilities_); }
  /// Whether frames with these probabilities hold speech.
  static bool hasSpeech(std::span<const float> probabilities);

 private:
  static Piece judge(std::span<const float> probabilities);
  Piece cutAfter(std::size_t count);
  [[nodiscard]] std::size_t leastProbable() const;

  const std::size_t maxFrames_;
  std::vector<float> probabilities_;  ///< of the piece that has not ended
  std::size_t silentFrames_ = 0;      ///< at its end
};

}  // namespace voxtrel::quillback
