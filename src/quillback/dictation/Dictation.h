#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <memory>
#include <string>

#include "quillback/ports/Loop.h"
#include "quillback/ports/Microphone.h"
#include "quillback/ports/Output.h"
#include "quillback/ports/Recogniser.h"
#include "quillback/ports/ScreenLock.h"
#include "quillback/ports/TakeStore.h"
#include "quillback/ports/TextSink.h"

namespace voxtrel::quillback {

/// From a held key to words: records while the key is down, has the sound recognised meanwhile,
/// prints each state and inserts the words. A recording made while an earlier one is still being
/// recognised waits in a queue. Each complete recording is kept until its words were inserted. A press
/// before the model is loaded only prints a line; if the key is still down when it is loaded, recording
/// starts then. While the screen is locked, no recording begins, a running one is dropped, and words are
/// neither printed nor inserted: their recordings stay for a retry. Not before the key can be seen and a
/// microphone is there does it say that it is ready; until then a press records only once sound arrives.
/// Thread: the loop's.  Owns: the takes.  Borrows: the constructor's arguments (must outlive this).
/// Fails by: a line of output; the next press works again.
class Dictation {
 public:
  /// How long recording continues after the release: the source is late by about as much, and people
  /// let go during the last word.
  static constexpr std::chrono::milliseconds kTail{120};
  /// A shorter press is a slip.
  static constexpr std::chrono::milliseconds kMinPress{250};
  static constexpr std::chrono::minutes kMaxLength{5};
  /// How often the lock is looked at during a recording, and until a locked screen is unlocked.
  static constexpr std::chrono::milliseconds kLockCheck{250};
  static constexpr std::chrono::milliseconds kUnlockCheck{1000};
  /// Recordings in the queue, with the one being recognised.
  static constexpr std::size_t kMaxTakes = 8;

  Dictation(Loop& loop, Microphone& microphone, TextSink& sink, TakeStore& store, ScreenLock& lock,
            Output& output);
  Dictation(const Dictation&) = delete;
  Dictation& operator=(const Dictation&) = delete;

  /// Recording is possible from now on. Called once; `recogniser` must outlive this.
  void modelLoaded(Recogniser& recogniser);
  /// The key can be seen from now on; a press says the same.
  void keySeen();
  /// A microphone is there; sound from it says the same.
  void microphoneFound();
  void keyPressed();
  void keyReleased();
  /// Drops what the held key has recorded so far.
  void keyCancelled();

 private:
  struct Take;
  using Handle = std::shared_ptr<Take>;
  using Weak = std::weak_ptr<Take>;
  /// The state that the reader was told last; `unknown` after words that name a state.
  enum class Shown { loading, ready, recording, processing, unknown };

  void startTake();
  void openMicrophone(const Handle& take);
  Handle heldTake() const;
  void captureFailed(const Handle& take, const std::string& why);
  void reachedLimit(const Handle& take);
  void stopRecording(const Handle& take);
  void judge(const Handle& take);
  void drop(const Handle& take);
  void advanceFirstTake();
  void finish(const Handle& take);
  void recognised(const Handle& take, const Transcription& result);
  void showRecording();
  void showState();
  void holdBack(const Handle& take);
  void watchLock(const Handle& take);
  void dropLocked(const Handle& take);
  void reportAfterUnlock();

  Loop& loop_;
  Microphone& microphone_;
  TextSink& sink_;
  TakeStore& store_;
  ScreenLock& lock_;
  Output& output_;
  Recogniser* recogniser_ = nullptr;
  bool isKeySeen_ = false;
  bool hasMicrophone_ = false;
  bool isKeyDown_ = false;
  Shown shown_ = Shown::loading;
  bool hasHeldWordsBack_ = false;             ///< since the screen was locked
  std::unique_ptr<Loop::Timer> unlockTimer_;  ///< while an unlock is to be reported
  std::deque<Handle> takes_;                  ///< oldest first; only the first has an utterance
};

}  // namespace voxtrel::quillback
