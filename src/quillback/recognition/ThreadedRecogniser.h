#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>

#include "quillback/ports/Loop.h"
#include "quillback/recognition/RecogniserBackend.h"

namespace voxtrel::quillback {

/// Runs a RecogniserBackend on its own thread. Speech is recognised while it is spoken, so little
/// is left to do after the last sample.
/// Thread: the loop's.  Owns: the backend and its thread.  Borrows: Loop (must outlive this).
/// Fails by: the load report; without a usable model no utterance is ever done.
class ThreadedRecogniser final : public Recogniser {
 public:
  using OnLoaded = std::function<void(const LoadReport&)>;

  /// How long the destructor waits for a backend that cannot be interrupted. After that the thread
  /// is detached: it uses only the backend, which it owns, and ends after its current step.
  static constexpr std::chrono::milliseconds kStopTimeout{200};
  /// After this many samples (0.1 s) the thread checks whether the utterance is still wanted.
  static constexpr std::size_t kMaxStepSamples = 1600;

  /// Starts to load the model. `onLoaded` runs later on the loop's thread, unless this is destroyed
  /// first. After `restAfter` without an utterance the backend rests once; without a value never.
  ThreadedRecogniser(Loop& loop, std::unique_ptr<RecogniserBackend> backend, OnLoaded onLoaded,
                     std::optional<std::chrono::seconds> restAfter = {});
  ThreadedRecogniser(const ThreadedRecogniser&) = delete;
  ThreadedRecogniser& operator=(const ThreadedRecogniser&) = delete;
  /// Returns within kStopTimeout, whatever the backend does.
  ~ThreadedRecogniser() override;

  /// May be called while the model is loading: samples are queued until then.
  [[nodiscard]] std::unique_ptr<Utterance> begin() override;

 private:
  class Worker;
  class QueuedUtterance;

  const std::shared_ptr<Worker> worker_;
  const std::shared_ptr<const bool> alive_;  ///< tasks on the loop hold it weakly
};

}  // namespace voxtrel::quillback
