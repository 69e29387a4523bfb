#pragma once

#include "quillback/ports/Microphone.h"

namespace voxtrel::quillback {

/// The sound server's default source. Between captures there is no connection: a new one takes 2 ms,
/// and an idle one could die unnoticed.
/// Thread: the loop's.
class PulseMicrophone final : public Microphone {
 public:
  [[nodiscard]] std::unique_ptr<Capture> open(Listener listener) override;
};

}  // namespace voxtrel::quillback
