#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <span>
#include <thread>

#include "quillback/ports/Loop.h"
#include "quillback/recognition/SpeechEngine.h"
#include "quillback/recognition/SpeechJob.h"

namespace voxtrel::quillback {

/// The thread on which an engine loads its model and works through its jobs, one after the other. The
/// thread keeps a share of this: it can outlive its owner while the library is in a long step.
/// Thread: any.  Owns: the engine, the thread.  Borrows: Loop (until `stop` has returned).
class EngineThread : public std::enable_shared_from_this<EngineThread> {
 public:
  using OnLoaded = std::function<void(const LoadReport&)>;
  using Job = std::shared_ptr<SpeechJob>;

  /// How long `stop` waits for a library that cannot be interrupted. After that the thread is left to
  /// itself: it touches nothing but the engine, which is its own, and ends with its current step.
  static constexpr std::chrono::milliseconds kPatience{200};
  /// Samples of one step, after which the thread looks whether it is still wanted: 0.1 s.
  static constexpr std::size_t kStepSamples = 1600;

  EngineThread(Loop& loop, std::unique_ptr<SpeechEngine> engine);
  EngineThread(const EngineThread&) = delete;
  EngineThread& operator=(const EngineThread&) = delete;
  ~EngineThread() = default;

  /// Starts the thread, which loads the model first; `onLoaded` runs on the loop's thread. Called once.
  void start(OnLoaded onLoaded);
  /// Nothing is posted to the loop any more. Called once, after `start`.
  void stop();

  void add(const Job& job);
  void feed(SpeechJob& job, std::span<const std::int16_t> samples);
  void finish(SpeechJob& job);
  void drop(SpeechJob& job);

 private:
  void run(const OnLoaded& onLoaded);
  Job firstJob();
  void work(const Job& job);
  bool isStopped();
  bool takeSamples(SpeechJob& job, std::vector<std::int16_t>& samples);
  void hear(const SpeechJob& job, std::span<const std::int16_t> samples);
  void post(Loop::Task task);

  Loop& loop_;
  std::unique_ptr<SpeechEngine> engine_;  // the thread's own
  std::thread thread_;
  std::mutex posting_;  // over mayPost_, and while posting: after `stop` the loop may be gone
  bool mayPost_ = true;
  std::mutex mutex_;  // over the fields below and those of the jobs that say so
  std::condition_variable changed_;
  std::deque<Job> jobs_;  // the first is being worked on
  bool isStopped_ = false;
  bool hasEnded_ = false;
};

}  // namespace voxtrel::quillback
