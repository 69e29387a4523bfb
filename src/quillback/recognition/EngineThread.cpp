#include "quillback/recognition/EngineThread.h"

#include <algorithm>
#include <utility>

namespace voxtrel::quillback {

EngineThread::EngineThread(Loop& loop, std::unique_ptr<SpeechEngine> engine)
    : loop_(loop), engine_(std::move(engine)) {}

void EngineThread::start(OnLoaded onLoaded) {
  thread_ = std::thread([self = shared_from_this(), onLoaded = std::move(onLoaded)] {
    self->run(onLoaded);
    self->engine_.reset();  // here, because giving a large model back takes its time, too
    const std::lock_guard lock(self->mutex_);
    self->hasEnded_ = true;
    self->changed_.notify_all();
  });
}

void EngineThread::stop() {
  {
    const std::lock_guard lock(posting_);
    mayPost_ = false;
  }
  std::unique_lock lock(mutex_);
  isStopped_ = true;
  for (const Job& job : jobs_) job->isDropped = true;
  changed_.notify_all();
  const bool hasEnded = changed_.wait_for(lock, kPatience, [this] { return hasEnded_; });
  lock.unlock();
  if (hasEnded) {
    thread_.join();
  } else {
    thread_.detach();
  }
}

void EngineThread::add(const Job& job) {
  const std::lock_guard lock(mutex_);
  jobs_.push_back(job);
  changed_.notify_all();
}

void EngineThread::feed(SpeechJob& job, std::span<const std::int16_t> samples) {
  const std::lock_guard lock(mutex_);
  job.waiting.insert(job.waiting.end(), samples.begin(), samples.end());
  changed_.notify_all();
}

void EngineThread::finish(SpeechJob& job) {
  const std::lock_guard lock(mutex_);
  job.finishedAt = std::chrono::steady_clock::now();
  changed_.notify_all();
}

void EngineThread::drop(SpeechJob& job) {
  const std::lock_guard lock(mutex_);
  job.isDropped = true;
  changed_.notify_all();
}

void EngineThread::run(const OnLoaded& onLoaded) {
  const LoadReport report = engine_->load();
  post([onLoaded, report] { onLoaded(report); });
  if (!report.isUsable) return;
  while (const Job job = firstJob()) {
    work(job);
    const std::lock_guard lock(mutex_);
    jobs_.pop_front();
  }
}

EngineThread::Job EngineThread::firstJob() {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return isStopped_ || !jobs_.empty(); });
  return isStopped_ ? nullptr : jobs_.front();
}

void EngineThread::work(const Job& job) {
  std::vector<std::int16_t> samples;
  engine_->begin(job->isDropped);
  while (takeSamples(*job, samples)) hear(*job, samples);
  if (isStopped()) return;
  // Also where nobody wants it any more: now nobody waits for the engine to put it away.
  const Transcription result = engine_->finish();
  if (job->isDropped) return;
  post([job, result] {
    // The callback may drop the utterance, and with it itself.
    const auto done = std::move(job->done);
    if (!job->isDropped && done) done(result);
  });
}

bool EngineThread::isStopped() {
  const std::lock_guard lock(mutex_);
  return isStopped_;
}

/// Waits for samples; false once there will be no more.
bool EngineThread::takeSamples(SpeechJob& job, std::vector<std::int16_t>& samples) {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [&job] { return job.isDropped || job.finishedAt || !job.waiting.empty(); });
  samples.clear();
  std::swap(samples, job.waiting);
  return !job.isDropped && !samples.empty();
}

void EngineThread::hear(const SpeechJob& job, std::span<const std::int16_t> samples) {
  while (!samples.empty() && !job.isDropped) {
    const std::size_t count = std::min(samples.size(), kStepSamples);
    engine_->hear(samples.first(count));
    samples = samples.subspan(count);
  }
}

void EngineThread::post(Loop::Task task) {
  const std::lock_guard lock(posting_);
  if (mayPost_) loop_.post(std::move(task));
}

}  // namespace voxtrel::quillback
