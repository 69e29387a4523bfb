#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <memory>
#include <span>
#include <string>

#include "quillback/dictation/Take.h"
#include "quillback/ports/Output.h"
#include "quillback/ports/TextSink.h"

namespace voxtrel::quillback {

/// From a held key to words: records while the key is down, has that recognised meanwhile, prints what
/// happens and hands the words on. No press is lost once the model is there: a recording that begins
/// while an earlier one is being recognised waits its turn. Before that a press records nothing and
/// says so; if the key is still down when the model is there, recording begins then.
/// Thread: the loop's.  Owns: the takes.  Borrows: all that it is made with (must outlive this).
/// Fails by: a line of output; then it is ready for the next press.
class Dictation {
 public:
  /// What the source has not yet delivered at the key's release, and the end of a word spoken on it.
  static constexpr std::chrono::milliseconds kTail{120};
  /// A shorter press is a slip and no speech.
  static constexpr std::chrono::milliseconds kShortest{250};
  static constexpr std::chrono::minutes kLongest{5};
  /// Recordings that may wait for a slow recogniser, the one being recognised included.
  static constexpr std::size_t kMostTakes = 8;

  Dictation(Loop& loop, Microphone& microphone, TextSink& sink, Output& output);
  Dictation(const Dictation&) = delete;
  Dictation& operator=(const Dictation&) = delete;

  /// From now on there is a recogniser (must outlive this). Called once.
  void modelLoaded(Recogniser& recogniser);
  void keyPressed();
  void keyReleased();
  /// What the held key has recorded so far is dropped.
  void keyCancelled();

 private:
  using Handle = std::shared_ptr<Take>;
  using Weak = std::weak_ptr<Take>;
  /// Which state the reader believes in; `anything` after words that name one.
  enum class Shown { loading, ready, recording, processing, anything };

  void startTake();
  void openMicrophone(const Handle& take);
  Handle heldTake() const;
  void hear(Take& take, std::span<const std::int16_t> samples);
  void stopRecording(const Handle& take);
  void judge(const Handle& take);
  void captureFailed(const Handle& take, const std::string& why);
  void reachedLimit(const Handle& take);
  void drop(const Handle& take);
  void advanceFirstTake();
  void finish(const Handle& take);
  void recognised(const Handle& take, const Transcription& result);
  void showState();

  Loop& loop_;
  Microphone& microphone_;
  TextSink& sink_;
  Output& output_;
  Recogniser* recogniser_ = nullptr;
  bool isKeyDown_ = false;
  Shown shown_ = Shown::loading;
  std::deque<Handle> takes_;  ///< in the order of their presses; only the first has an utterance
};

}  // namespace voxtrel::quillback
