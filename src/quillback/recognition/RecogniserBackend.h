#pragma once

#include <atomic>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "quillback/ports/Recogniser.h"

namespace voxtrel::quillback {

/// The result of loading a model.
struct LoadReport {
  bool isUsable = false;
  /// Lines of output for the user; of a model that cannot be used: why, as half sentences.
  std::vector<std::string> lines;
};

/// A speech recognition library with blocking calls.
/// Thread: one, the same for all calls.
/// Fails by: a LoadReport that is not usable; later by empty text.
class RecogniserBackend {
 public:
  virtual ~RecogniserBackend() = default;

  /// Loads the model. Called once, before all other functions.
  virtual LoadReport load() = 0;
  /// Starts an utterance; earlier speech has no effect on it. Another thread sets `isDropped` when
  /// the text is no longer wanted: the calls for this utterance may then return early. The flag
  /// outlives the utterance.
  virtual void begin(const std::atomic<bool>& isDropped) = 0;
  /// Takes the next mono samples at kSampleRateHz.
  virtual void feed(std::span<const std::int16_t> samples) = 0;
  /// Returns the text of all samples since `begin`.
  virtual Transcription finish() = 0;
  /// Ends an utterance whose `isDropped` is set: called instead of `finish`, and also after a
  /// `finish` during which it was set. What the backend has to clean up is done here rather than
  /// while the next speech waits.
  virtual void drop() {}
  /// Called after a pause between utterances: gives back memory that the next `begin` can get again.
  virtual void rest() {}
};

}  // namespace voxtrel::quillback
