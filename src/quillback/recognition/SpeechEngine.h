#pragma once

#include <atomic>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "quillback/ports/Recogniser.h"

namespace voxtrel::quillback {

/// What came of loading a model.
struct LoadReport {
  bool isUsable = false;
  std::vector<std::string> lines;  ///< of output, for the user
};

/// A recogniser as its library offers it: one call after the other, each of which takes its time.
/// Thread: all from one.
/// Fails by: a LoadReport; later by text that is not there.
class SpeechEngine {
 public:
  virtual ~SpeechEngine() = default;

  /// Loads the model. Called once, before the others.
  virtual LoadReport load() = 0;
  /// Forgets all earlier speech. Once `isDropped` is set (by another thread) nobody wants the rest: the
  /// calls of this utterance may return early. It outlives the utterance.
  virtual void begin(const std::atomic<bool>& isDropped) = 0;
  /// The next samples at kSampleRateHz.
  virtual void hear(std::span<const std::int16_t> samples) = 0;
  /// What all samples since `begin` say.
  virtual Transcription finish() = 0;
};

}  // namespace voxtrel::quillback
