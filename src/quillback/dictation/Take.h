#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "quillback/dictation/SpeechMeter.h"
#include "quillback/ports/Loop.h"
#include "quillback/ports/Microphone.h"
#include "quillback/ports/Recogniser.h"

namespace voxtrel::quillback {

/// One recording, from the press of the key to its words.
/// Thread: the loop's.  Owns: its capture and its utterance.
struct Take {
  enum class Phase {
    held,     ///< the key is down
    tail,     ///< the key is up, and what was spoken is still on its way
    waiting,  ///< complete, while an earlier take is being recognised
    finished  ///< complete, and the recogniser knows
  };

  bool isRecording() const { return phase == Phase::held || phase == Phase::tail; }

  Phase phase = Phase::held;
  Loop::TimePoint pressedAt;
  SpeechMeter meter;
  std::vector<std::int16_t> backlog;     ///< samples for an utterance that has not begun
  std::unique_ptr<Utterance> utterance;  ///< from when the take is the first one
  std::unique_ptr<Loop::Timer> timer;    ///< ends the recording
  std::unique_ptr<Capture> capture;
};

}  // namespace voxtrel::quillback
