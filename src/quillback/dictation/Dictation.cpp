#include "quillback/dictation/Dictation.h"

#include <cstdint>
#include <span>
#include <utility>
#include <vector>

#include "quillback/dictation/PrintedLines.h"
#include "quillback/dictation/SpeechMeter.h"
#include "quillback/text/TextRules.h"

namespace voxtrel::quillback {
namespace {

constexpr std::size_t kMinSamples = kSampleRateHz / 4;

}  // namespace

/// One recording, from the press of the key to its words.
/// Thread: the loop's.  Owns: its capture and its utterance.
struct Dictation::Take {
  enum class Phase {
    held,     ///< the key is down
    tail,     ///< the key is up, the last sound is still on its way
    waiting,  ///< complete, while an earlier take is being recognised
    finished  ///< complete, and the recogniser has all of it
  };

  bool isRecording() const { return phase == Phase::held || phase == Phase::tail; }
  void feed(std::span<const std::int16_t> heard);

  Phase phase = Phase::held;
  Loop::TimePoint pressedAt;
  SpeechMeter meter;
  std::vector<std::int16_t> samples;     ///< until it is kept and the recogniser has them
  std::unique_ptr<KeptTake> kept;        ///< set once it is complete, unless it cannot be kept
  std::unique_ptr<Utterance> utterance;  ///< set while this is the first take
  std::unique_ptr<Loop::Timer> timer;    ///< ends the recording
  std::unique_ptr<Loop::Timer> lockTimer;
  std::unique_ptr<Capture> capture;
};

void Dictation::Take::feed(std::span<const std::int16_t> heard) {
  meter.feed(heard);
  samples.insert(samples.end(), heard.begin(), heard.end());
  if (utterance) utterance->feed(heard);
}

Dictation::Dictation(Loop& loop, Microphone& microphone, TextSink& sink, TakeStore& store,
                     ScreenLock& lock, Output& output)
    : loop_(loop),
      microphone_(microphone),
      sink_(sink),
      store_(store),
      lock_(lock),
      output_(output) {}

void Dictation::modelLoaded(Recogniser& recogniser) {
  recogniser_ = &recogniser;
  showState();
  if (isKeyDown_) startTake();
}

void Dictation::keySeen() {
  isKeySeen_ = true;
  if (recogniser_ != nullptr) showState();
}

void Dictation::microphoneFound() {
  if (std::exchange(hasMicrophone_, true)) return;
  if (recogniser_ != nullptr) showState();
}

void Dictation::keyPressed() {
  isKeySeen_ = true;
  if (std::exchange(isKeyDown_, true)) return;
  if (recogniser_ != nullptr) return startTake();
  output_.print("The speech model is still loading; keep the key down or press it again.");
}

void Dictation::keyReleased() {
  if (!std::exchange(isKeyDown_, false)) return;
  const Handle take = heldTake();
  if (!take) return;
  if (loop_.now() - take->pressedAt < kMinPress) return drop(take);
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
  if (lock_.isLocked()) return reportAfterUnlock();
  if (takes_.size() == kMaxTakes) {
    output_.print("Too many recordings are waiting to be recognised; this one is not made.");
    return;
  }
  showRecording();
  const auto take = std::make_shared<Take>();
  take->pressedAt = loop_.now();
  takes_.push_back(take);
  openMicrophone(take);
  watchLock(take);
  take->timer = loop_.after(kMaxLength, [this, weak = Weak(take)] {
    if (const Handle self = weak.lock()) reachedLimit(self);
  });
  advanceFirstTake();
}

void Dictation::openMicrophone(const Handle& take) {
  const Weak weak(take);
  Microphone::Listener listener;
  // The microphone's thread only copies; takes are touched on the loop's thread.
  listener.onSamples = [this, weak](std::span<const std::int16_t> samples) {
    loop_.post([this, weak, copy = std::vector(samples.begin(), samples.end())] {
      const Handle self = weak.lock();
      if (!self) return;
      microphoneFound();
      self->feed(copy);
    });
  };
  // Runs after the samples posted before it.
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

void Dictation::captureFailed(const Handle& take, const std::string& why) {
  if (!take->capture) return;
  output_.print(captureFailedLine(why));
  stopRecording(take);  // what was recorded until then is recognised
}

void Dictation::reachedLimit(const Handle& take) {
  output_.print("This recording has reached the limit of 5 minutes and ends here.");
  stopRecording(take);
}

void Dictation::stopRecording(const Handle& take) {
  take->phase = Take::Phase::tail;
  take->capture.reset();
  take->timer.reset();
  take->lockTimer.reset();
  // The last samples may be posted and not fed yet.
  loop_.post([this, weak = Weak(take)] {
    if (const Handle self = weak.lock()) judge(self);
  });
}

void Dictation::judge(const Handle& take) {
  if (lock_.isLocked()) return dropLocked(take);
  if (take->meter.samples() < kMinSamples || take->meter.isSilence()) return drop(take);
  take->phase = Take::Phase::waiting;
  take->kept = store_.keep(take->samples);
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

/// Begins the first take's utterance with what it has recorded so far.
void Dictation::advanceFirstTake() {
  if (takes_.empty()) return;
  const Handle first = takes_.front();
  if (!first->utterance) {
    first->utterance = recogniser_->begin();
    if (!first->samples.empty()) first->utterance->feed(first->samples);
  }
  if (first->phase == Take::Phase::waiting) finish(first);
}

void Dictation::finish(const Handle& take) {
  take->phase = Take::Phase::finished;
  take->samples = {};
  take->utterance->finish([this, weak = Weak(take)](const Transcription& result) {
    if (const Handle self = weak.lock()) recognised(self, result);
  });
}

void Dictation::recognised(const Handle& take, const Transcription& result) {
  take->utterance.reset();
  std::erase(takes_, take);
  for (const std::string& line : result.lines) output_.print(line);
  const std::string text = oneLineOfWords(result.text);
  if (!text.empty() && lock_.isLocked()) return holdBack(take);
  if (!text.empty()) {
    output_.print(textLine(text));
    if (saysState(text)) shown_ = Shown::unknown;
    // The reader takes this line for "ready", so it waits until no take is left.
    if (takes_.empty()) output_.print(timingLine(result.encode, result.decode));
  }
  showState();
  const std::shared_ptr kept = std::move(take->kept);
  if (!text.empty()) {
    sink_.insert(text, [kept] {
      if (kept) kept->delivered();
    });
  } else if (kept) {
    kept->gaveNoWords();
  }
  advanceFirstTake();
}

/// The recording stays for a retry.
void Dictation::holdBack(const Handle& take) {
  if (take->kept) hasHeldWordsBack_ = true;
  reportAfterUnlock();
  showState();
  advanceFirstTake();
}

void Dictation::watchLock(const Handle& take) {
  take->lockTimer = loop_.after(kLockCheck, [this, weak = Weak(take)] {
    const Handle self = weak.lock();
    if (self) lock_.isLocked() ? dropLocked(self) : watchLock(self);
  });
}

void Dictation::dropLocked(const Handle& take) {
  reportAfterUnlock();
  take->lockTimer.reset();
  drop(take);
}

/// A line would not be read while the screen is locked, so it waits.
void Dictation::reportAfterUnlock() {
  unlockTimer_ = loop_.after(kUnlockCheck, [this] {
    if (lock_.isLocked()) return reportAfterUnlock();
    unlockTimer_.reset();
    output_.print(std::exchange(hasHeldWordsBack_, false) ? kLockedWordsLine : kLockedLine);
  });
}

/// Without a microphone the reader would wait in vain for the end of the recording: no line but "ready" is
/// one, and that would not be true.
void Dictation::showRecording() {
  if (!hasMicrophone_) return;
  output_.print(kRecordingLine);
  shown_ = Shown::recording;
}

/// Prints the state of all takes together, unless it was printed last. The first "ready" waits for the key
/// and the microphone.
void Dictation::showState() {
  Shown now = takes_.empty() ? Shown::ready : Shown::processing;
  for (const Handle& take : takes_) {
    if (take->isRecording()) now = Shown::recording;
  }
  if (shown_ == Shown::loading && now == Shown::ready && !isKeySeen_) return;
  if (!hasMicrophone_) return;
  if (std::exchange(shown_, now) == now) return;
  if (now == Shown::ready) output_.print(kReadyLine);
  if (now == Shown::recording) output_.print(kRecordingLine);
  if (now == Shown::processing) output_.print(processingLine(takes_.back()->meter.samples()));
}

}  // namespace voxtrel::quillback
