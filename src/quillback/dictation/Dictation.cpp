#include "quillback/dictation/Dictation.h"

#include <algorithm>
#include <utility>

#include "common/base/Lines.h"
#include "quillback/dictation/PrintedLines.h"

namespace voxtrel::quillback {
namespace {

constexpr std::size_t kFewestSamples = kSampleRateHz / 4;

}  // namespace

Dictation::Dictation(Loop& loop, Microphone& microphone, TextSink& sink, Output& output)
    : loop_(loop), microphone_(microphone), sink_(sink), output_(output) {}

void Dictation::modelLoaded(Recogniser& recogniser) {
  recogniser_ = &recogniser;
  showState();
  if (isKeyDown_) startTake();
}

void Dictation::keyPressed() {
  if (std::exchange(isKeyDown_, true)) return;
  if (recogniser_ != nullptr) return startTake();
  output_.print("The speech model is still loading; keep the key down or press it again.");
}

void Dictation::keyReleased() {
  if (!std::exchange(isKeyDown_, false)) return;
  const Handle take = heldTake();
  if (!take) return;
  if (loop_.now() - take->pressedAt < kShortest) return drop(take);
  take->phase = Take::Phase::tail;
  take->timer = loop_.after(kTail, [this, weak = Weak(take)] {
    if (const Handle self = weak.lock()) stopRecording(self);
  });
}

void Dictation::keyCancelled() {
  if (!std::exchange(isKeyDown_, false)) return;
  if (const Handle take = heldTake()) drop(take);
}

void Dictation::startTake() {
  if (takes_.size() == kMostTakes) {
    output_.print("Too many recordings wait for their words; this one is not made.");
    return;
  }
  output_.print(kRecordingLine);
  shown_ = Shown::recording;
  const auto take = std::make_shared<Take>();
  take->pressedAt = loop_.now();
  takes_.push_back(take);
  openMicrophone(take);
  take->timer = loop_.after(kLongest, [this, weak = Weak(take)] {
    if (const Handle self = weak.lock()) reachedLimit(self);
  });
  advanceFirstTake();
}

void Dictation::openMicrophone(const Handle& take) {
  const Weak weak(take);
  Microphone::Listener listener;
  // The microphone's thread only copies; a take is touched by the loop's alone.
  listener.onSamples = [this, weak](std::span<const std::int16_t> samples) {
    loop_.post([this, weak, copy = std::vector(samples.begin(), samples.end())] {
      if (const Handle self = weak.lock()) hear(*self, copy);
    });
  };
  // Posted after the samples before it.
  listener.onFailure = [this, weak](const std::string& why) {
    loop_.post([this, weak, why] {
      if (const Handle self = weak.lock()) captureFailed(self, why);
    });
  };
  take->capture = microphone_.open(std::move(listener));
}

Dictation::Handle Dictation::heldTake() const {
  if (takes_.empty() || takes_.back()->phase != Take::Phase::held) return nullptr;
  return takes_.back();
}

void Dictation::hear(Take& take, std::span<const std::int16_t> samples) {
  take.meter.hear(samples);
  if (take.utterance) {
    take.utterance->feed(samples);
  } else {
    take.backlog.insert(take.backlog.end(), samples.begin(), samples.end());
  }
}

void Dictation::captureFailed(const Handle& take, const std::string& why) {
  if (!take->capture) return;
  output_.print(captureFailedLine(why));
  stopRecording(take);  // what was spoken until then is not lost
}

void Dictation::reachedLimit(const Handle& take) {
  output_.print("This recording is 5 minutes long, the most that is possible; it ends here.");
  stopRecording(take);
}

void Dictation::stopRecording(const Handle& take) {
  take->phase = Take::Phase::tail;
  take->capture.reset();
  take->timer.reset();
  // The last samples are posted and not heard yet.
  loop_.post([this, weak = Weak(take)] {
    if (const Handle self = weak.lock()) judge(self);
  });
}

void Dictation::judge(const Handle& take) {
  if (take->meter.samples() < kFewestSamples || take->meter.isSilence()) return drop(take);
  take->phase = Take::Phase::waiting;
  showState();
  advanceFirstTake();
}

void Dictation::drop(const Handle& take) {
  take->capture.reset();
  take->timer.reset();
  take->utterance.reset();
  std::erase(takes_, take);
  showState();
  advanceFirstTake();
}

/// Gives the first take its utterance, and what it has recorded before that.
void Dictation::advanceFirstTake() {
  if (takes_.empty()) return;
  const Handle first = takes_.front();
  if (!first->utterance) {
    first->utterance = recogniser_->begin();
    if (!first->backlog.empty()) first->utterance->feed(std::exchange(first->backlog, {}));
  }
  if (first->phase == Take::Phase::waiting) finish(first);
}

void Dictation::finish(const Handle& take) {
  take->phase = Take::Phase::finished;
  take->utterance->finish([this, weak = Weak(take)](const Transcription& result) {
    // Not at once: an utterance must not be destroyed from within its own call.
    loop_.post([this, weak, result] {
      if (const Handle self = weak.lock()) recognised(self, result);
    });
  });
}

void Dictation::recognised(const Handle& take, const Transcription& result) {
  take->utterance.reset();
  std::erase(takes_, take);
  const std::string text = trimmedOneLine(result.text);
  if (!text.empty()) {
    output_.print(textLine(text));
    if (saysState(text)) shown_ = Shown::anything;
    // This line says "ready" as well, and others may still be recorded or recognised.
    if (takes_.empty()) output_.print(timingLine(result.encode, result.decode));
  }
  showState();
  if (!text.empty()) sink_.insert(text);
  advanceFirstTake();
}

/// Prints the line of the state that all takes together are in, if another one was printed last.
void Dictation::showState() {
  Shown now = takes_.empty() ? Shown::ready : Shown::processing;
  for (const Handle& take : takes_) {
    if (take->isRecording()) now = Shown::recording;
  }
  if (std::exchange(shown_, now) == now) return;
  if (now == Shown::ready) output_.print(kReadyLine);
  if (now == Shown::recording) output_.print(kRecordingLine);
  if (now == Shown::processing) output_.print(processingLine(takes_.back()->meter.samples()));
}

}  // namespace voxtrel::quillback
