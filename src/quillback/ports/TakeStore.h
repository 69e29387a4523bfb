#pragma once

#include <cstdint>
#include <memory>
#include <span>

namespace voxtrel::quillback {

/// A recording that is kept in case its words get lost. Destroying this leaves the recording there.
/// Thread: the loop's.
class KeptTake {
 public:
  virtual ~KeptTake() = default;

  /// Its words were printed and inserted, or are no longer wanted: removes the recording.
  virtual void delivered() = 0;
  /// It gave no words: keeps the recording until the next one is kept.
  virtual void gaveNoWords() = 0;
};

/// Keeps recordings beyond the end of this process.
/// Thread: the loop's.
class TakeStore {
 public:
  virtual ~TakeStore() = default;

  /// Keeps a recording: mono samples at kSampleRateHz.
  /// Fails by: null; nothing is kept then.
  [[nodiscard]] virtual std::unique_ptr<KeptTake> keep(std::span<const std::int16_t> samples) = 0;
};

}  // namespace voxtrel::quillback
