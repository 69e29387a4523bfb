#include "quillback/recognition/ThreadedRecogniser.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>

namespace voxtrel::quillback {
namespace {

/// One utterance, shared by the loop and the worker.
struct Job {
  std::atomic<bool> isDropped{false};       ///< any thread; set once
  std::function<void(Transcription)> done;  ///< the loop's thread
  std::vector<std::int16_t> samples;        ///< fed and not yet recognised; under the worker's lock
  bool isFinished = false;                  ///< under the worker's lock
};

}  // namespace

/// The backend's thread: loads the model, then works through the jobs one after the other. The
/// thread holds a share of this, because it can outlive the recogniser while the backend is in a
/// long step.
/// Thread: any.  Owns: the backend, the thread.  Borrows: Loop (until `stop` has returned).
class ThreadedRecogniser::Worker : public std::enable_shared_from_this<Worker> {
 public:
  using SharedJob = std::shared_ptr<Job>;

  Worker(Loop& loop, std::unique_ptr<RecogniserBackend> backend,
         std::optional<std::chrono::seconds> restAfter)
      : loop_(loop), backend_(std::move(backend)), restAfter_(restAfter) {}

  /// Called once. `onLoaded` runs on the loop's thread.
  void start(OnLoaded onLoaded);
  /// Called once, after `start`. Nothing is posted to the loop after it has returned.
  void stop();

  void add(const SharedJob& job) {
    change([&] { jobs_.push_back(job); });
  }
  void feed(Job& job, std::span<const std::int16_t> samples) {
    change([&] { job.samples.insert(job.samples.end(), samples.begin(), samples.end()); });
  }
  void finish(Job& job) {
    change([&] { job.isFinished = true; });
  }
  void drop(Job& job) {
    change([&] { job.isDropped = true; });
  }

 private:
  template <typename Change>
  void change(Change change) {
    const std::lock_guard lock(mutex_);
    change();
    changed_.notify_all();
  }

  void run(const OnLoaded& onLoaded);
  SharedJob waitForJob();
  void restWhenIdle(std::unique_lock<std::mutex>& lock);
  void recognise(const SharedJob& job);
  bool waitForSamples(Job& job, std::vector<std::int16_t>& samples);
  void feedBackend(const Job& job, std::span<const std::int16_t> samples);
  bool isStopped();
  void post(Loop::Task task);

  Loop& loop_;
  std::unique_ptr<RecogniserBackend> backend_;  // used by the thread only
  const std::optional<std::chrono::seconds> restAfter_;
  std::thread thread_;
  std::mutex postMutex_;  // held while posting: after `stop` the loop may be gone
  bool mayPost_ = true;   // under postMutex_
  std::mutex mutex_;      // guards the fields below and those of the jobs
  std::condition_variable changed_;
  std::deque<SharedJob> jobs_;  // the first is the one being recognised
  bool isStopped_ = false;
  bool hasEnded_ = false;
};

void ThreadedRecogniser::Worker::start(OnLoaded onLoaded) {
  thread_ = std::thread([self = shared_from_this(), onLoaded = std::move(onLoaded)] {
    self->run(onLoaded);
    self->backend_.reset();  // here, because freeing a large model takes time too
    self->change([&] { self->hasEnded_ = true; });
  });
}

void ThreadedRecogniser::Worker::stop() {
  {
    const std::lock_guard lock(postMutex_);
    mayPost_ = false;
  }
  std::unique_lock lock(mutex_);
  isStopped_ = true;
  for (const SharedJob& job : jobs_) job->isDropped = true;
  changed_.notify_all();
  const bool hasEnded = changed_.wait_for(lock, kStopTimeout, [this] { return hasEnded_; });
  lock.unlock();
  if (hasEnded) {
    thread_.join();
  } else {
    thread_.detach();
  }
}

void ThreadedRecogniser::Worker::run(const OnLoaded& onLoaded) {
  const LoadReport report = backend_->load();
  post([onLoaded, report] { onLoaded(report); });
  if (!report.isUsable) return;
  while (const SharedJob job = waitForJob()) {
    recognise(job);
    const std::lock_guard lock(mutex_);
    jobs_.pop_front();
  }
}

/// Null once stopped.
ThreadedRecogniser::Worker::SharedJob ThreadedRecogniser::Worker::waitForJob() {
  std::unique_lock lock(mutex_);
  restWhenIdle(lock);
  changed_.wait(lock, [this] { return isStopped_ || !jobs_.empty(); });
  return isStopped_ ? nullptr : jobs_.front();
}

/// Without a time to rest after, nothing here wakes the thread.
void ThreadedRecogniser::Worker::restWhenIdle(std::unique_lock<std::mutex>& lock) {
  if (!restAfter_) return;
  if (changed_.wait_for(lock, *restAfter_, [this] { return isStopped_ || !jobs_.empty(); })) return;
  lock.unlock();
  backend_->rest();
  lock.lock();
}

void ThreadedRecogniser::Worker::recognise(const SharedJob& job) {
  if (job->isDropped) return;  // while it was queued
  std::vector<std::int16_t> samples;
  backend_->begin(job->isDropped);
  while (waitForSamples(*job, samples)) feedBackend(*job, samples);
  if (isStopped()) return;
  if (job->isDropped) return backend_->drop();
  const Transcription result = backend_->finish();
  if (isStopped()) return;
  if (job->isDropped) return backend_->drop();
  post([job, result] {
    // The callback may destroy the utterance, and with it `done` itself.
    const auto done = std::move(job->done);
    if (!job->isDropped && done) done(result);
  });
}

/// Moves the queued samples into `samples`; false when no more will come.
bool ThreadedRecogniser::Worker::waitForSamples(Job& job, std::vector<std::int16_t>& samples) {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [&job] { return job.isDropped || job.isFinished || !job.samples.empty(); });
  samples.clear();
  std::swap(samples, job.samples);
  return !job.isDropped && !samples.empty();
}

void ThreadedRecogniser::Worker::feedBackend(const Job& job,
                                             std::span<const std::int16_t> samples) {
  while (!samples.empty() && !job.isDropped) {
    const std::size_t count = std::min(samples.size(), kMaxStepSamples);
    backend_->feed(samples.first(count));
    samples = samples.subspan(count);
  }
}

bool ThreadedRecogniser::Worker::isStopped() {
  const std::lock_guard lock(mutex_);
  return isStopped_;
}

void ThreadedRecogniser::Worker::post(Loop::Task task) {
  const std::lock_guard lock(postMutex_);
  if (mayPost_) loop_.post(std::move(task));
}

class ThreadedRecogniser::QueuedUtterance final : public Utterance {
 public:
  explicit QueuedUtterance(std::shared_ptr<Worker> worker) : worker_(std::move(worker)) {
    worker_->add(job_);
  }
  QueuedUtterance(const QueuedUtterance&) = delete;
  QueuedUtterance& operator=(const QueuedUtterance&) = delete;
  ~QueuedUtterance() override { worker_->drop(*job_); }

  void feed(std::span<const std::int16_t> samples) override { worker_->feed(*job_, samples); }

  void finish(std::function<void(Transcription)> done) override {
    job_->done = std::move(done);
    worker_->finish(*job_);
  }

 private:
  const std::shared_ptr<Worker> worker_;
  const std::shared_ptr<Job> job_ = std::make_shared<Job>();
};

ThreadedRecogniser::ThreadedRecogniser(Loop& loop, std::unique_ptr<RecogniserBackend> backend,
                                       OnLoaded onLoaded,
                                       std::optional<std::chrono::seconds> restAfter)
    : worker_(std::make_shared<Worker>(loop, std::move(backend), restAfter)),
      alive_(std::make_shared<const bool>(true)) {
  worker_->start(
      [alive = std::weak_ptr(alive_), onLoaded = std::move(onLoaded)](const LoadReport& report) {
        if (!alive.expired()) onLoaded(report);
      });
}

ThreadedRecogniser::~ThreadedRecogniser() {
  worker_->stop();
}

std::unique_ptr<Utterance> ThreadedRecogniser::begin() {
  return std::make_unique<QueuedUtterance>(worker_);
}

}  // namespace voxtrel::quillback
