#pragma once

#include <functional>
#include <memory>

#include "quillback/recognition/EngineThread.h"

namespace voxtrel::quillback {

/// Lets a SpeechEngine work on a thread of its own: it hears speech while that is spoken, so that
/// little is left to do once the last sample is there.
/// Thread: the loop's.  Owns: the engine's thread.  Borrows: Loop (must outlive this).
/// Fails by: the report of loading; without a usable model no utterance is ever done.
class ThreadedRecogniser final : public Recogniser {
 public:
  /// Begins to load; `onLoaded` runs later on the loop's thread, unless this is gone by then.
  ThreadedRecogniser(Loop& loop, std::unique_ptr<SpeechEngine> engine,
                     EngineThread::OnLoaded onLoaded);
  ThreadedRecogniser(const ThreadedRecogniser&) = delete;
  ThreadedRecogniser& operator=(const ThreadedRecogniser&) = delete;
  /// Returns within EngineThread::kPatience, whatever the engine does.
  ~ThreadedRecogniser() override;

  /// May be called while the model is still loading: what is fed waits.
  [[nodiscard]] std::unique_ptr<Utterance> begin() override;

 private:
  const std::shared_ptr<EngineThread> thread_;
  const std::shared_ptr<const bool> isThere_;  ///< what waits on the loop holds it weakly
};

}  // namespace voxtrel::quillback
