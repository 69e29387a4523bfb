#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace voxtrel::quillback {

/// The recognised text, and how long it took after the last sample.
struct Transcription {
  std::string text;  ///< one line of UTF-8; empty if nothing was said
  std::chrono::microseconds encode{};
  std::chrono::microseconds decode{};
  std::vector<std::string> lines{};  ///< for the user
};

/// One recording that is recognised while it is spoken. Destroying it drops it.
/// Thread: `feed` from one thread at a time, any; the others from the loop's.
class Utterance {
 public:
  virtual ~Utterance() = default;

  /// Mono samples at kSampleRateHz. Copies them and returns at once.
  virtual void feed(std::span<const std::int16_t> samples) = 0;
  /// Called after the last samples. `onDone` runs once, later, on the loop's thread, unless the
  /// utterance is destroyed first. It may destroy the utterance.
  virtual void finish(std::function<void(Transcription)> onDone) = 0;
};

/// A loaded speech model.
/// Thread: the loop's; it works on its own threads.
class Recogniser {
 public:
  virtual ~Recogniser() = default;

  /// One utterance at a time: the previous one must be destroyed first.
  [[nodiscard]] virtual std::unique_ptr<Utterance> begin() = 0;
};

}  // namespace voxtrel::quillback
