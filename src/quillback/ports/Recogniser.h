#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>

namespace voxtrel::quillback {

/// What was understood, and how long that took after the last sample.
struct Transcription {
  std::string text;  ///< one line of UTF-8; empty where nothing was said
  std::chrono::microseconds encode{};
  std::chrono::microseconds decode{};
};

/// One piece of speech that is being recognised while it is spoken. Destroying it drops it.
/// Thread: `feed` from one thread at a time, any; the others from the loop's.
class Utterance {
 public:
  virtual ~Utterance() = default;

  /// Mono samples at kSampleRateHz. Copies them and returns at once.
  virtual void feed(std::span<const std::int16_t> samples) = 0;
  /// No more samples come. `done` is called once, on the loop's thread, unless this is gone by then.
  virtual void finish(std::function<void(Transcription)> done) = 0;
};

/// A speech model, loaded once.
/// Thread: the loop's; it works on threads of its own.
class Recogniser {
 public:
  virtual ~Recogniser() = default;

  /// One utterance at a time: the last one must be gone.
  [[nodiscard]] virtual std::unique_ptr<Utterance> begin() = 0;
};

}  // namespace voxtrel::quillback
