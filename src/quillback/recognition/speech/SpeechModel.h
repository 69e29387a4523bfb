#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <span>
#include <string>

#include "quillback/recognition/RecogniserBackend.h"

namespace voxtrel::quillback {

/// What a model heard in one piece of speech.
struct Heard {
  std::string text;     ///< UTF-8, with a leading blank in languages that put blanks between words
  bool wasCut = false;  ///< the model repeated itself; the text holds the repeated words once
  bool hasFailed = false;  ///< the library gave up; the text is not whole
  std::size_t tokens = 0;  ///< words and parts of words
  std::chrono::microseconds encode{};
  std::chrono::microseconds decode{};
};

/// A model that recognises one piece of speech at a time.
/// Thread: one, which it blocks.
/// Fails by: a LoadReport that is not usable; later by `hasFailed`. An exception of the library while it
/// recognises is not caught: it ends the recogniser's process, and another one gets the sound.
class SpeechModel {
 public:
  virtual ~SpeechModel() = default;

  /// The first line of a usable model says what runs and has no full stop.
  virtual LoadReport load() = 0;
  /// Starts an utterance: nothing found out about an earlier one, such as its language, holds.
  virtual void begin() = 0;
  /// Recognises up to `maxSamples` samples at kSampleRateHz, -1 to 1. Returns early, with any text,
  /// once `isDropped` is set.
  virtual Heard recognise(std::span<const float> samples, const std::atomic<bool>& isDropped) = 0;
  [[nodiscard]] virtual std::size_t maxSamples() const = 0;
};

/// Tells speech from other sound.
/// Thread: one.
class VoiceDetector {
 public:
  static constexpr std::size_t kFrameSamples = 512;  ///< 32 ms
  static constexpr float kSpeech = 0.5F;  ///< frames from this probability on hold speech

  virtual ~VoiceDetector() = default;

  /// Forgets the sound so far.
  virtual void reset() = 0;
  /// The probability of speech in the next frame, which has kFrameSamples samples and follows the one
  /// before.
  virtual float probability(std::span<const float> frame) = 0;
};

}  // namespace voxtrel::quillback
