#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "quillback/ports/Recogniser.h"

namespace voxtrel::quillback {

/// One utterance on its way from the loop to the engine's thread and back.
/// Thread: as each field says.
struct SpeechJob {
  std::atomic<bool> isDropped{false};       ///< any; set once
  std::function<void(Transcription)> done;  ///< the loop's
  std::vector<std::int16_t> waiting;        ///< under the engine thread's lock
  std::optional<std::chrono::steady_clock::time_point>
      finishedAt;  ///< under the engine thread's lock
};

}  // namespace voxtrel::quillback
