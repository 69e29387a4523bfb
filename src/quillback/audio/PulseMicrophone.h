#pragma once

#include "quillback/ports/Loop.h"
#include "quillback/ports/Microphone.h"

namespace voxtrel::quillback {

/// The default source of a sound server that speaks PulseAudio's protocol, PipeWire included. Between
/// captures there is no connection: making one takes 2 ms, and none can die unnoticed.
/// Thread: the loop's.  Borrows: the loop (must outlive this and its captures).
class PulseMicrophone final : public Microphone {
 public:
  explicit PulseMicrophone(Loop& loop) : loop_(loop) {}
  [[nodiscard]] std::unique_ptr<Capture> open(Listener listener) override;

 private:
  Loop& loop_;
};

}  // namespace voxtrel::quillback
