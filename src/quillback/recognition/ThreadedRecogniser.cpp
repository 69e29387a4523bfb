#include "quillback/recognition/ThreadedRecogniser.h"

#include <utility>

namespace voxtrel::quillback {
namespace {

class Speech final : public Utterance {
 public:
  explicit Speech(std::shared_ptr<EngineThread> thread) : thread_(std::move(thread)) {
    thread_->add(job_);
  }
  Speech(const Speech&) = delete;
  Speech& operator=(const Speech&) = delete;
  ~Speech() override { thread_->drop(*job_); }

  void feed(std::span<const std::int16_t> samples) override { thread_->feed(*job_, samples); }

  void finish(std::function<void(Transcription)> done) override {
    job_->done = std::move(done);
    thread_->finish(*job_);
  }

 private:
  const std::shared_ptr<EngineThread> thread_;
  const EngineThread::Job job_ = std::make_shared<SpeechJob>();
};

}  // namespace

ThreadedRecogniser::ThreadedRecogniser(Loop& loop, std::unique_ptr<SpeechEngine> engine,
                                       EngineThread::OnLoaded onLoaded)
    : thread_(std::make_shared<EngineThread>(loop, std::move(engine))),
      isThere_(std::make_shared<const bool>(true)) {
  thread_->start([isThere = std::weak_ptr(isThere_),
                  onLoaded = std::move(onLoaded)](const LoadReport& report) {
    if (!isThere.expired()) onLoaded(report);
  });
}

ThreadedRecogniser::~ThreadedRecogniser() {
  thread_->stop();
}

std::unique_ptr<Utterance> ThreadedRecogniser::begin() {
  return std::make_unique<Speech>(thread_);
}

}  // namespace voxtrel::quillback
