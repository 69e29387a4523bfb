#pragma once

#include "voxtrel/platform/Microphone.h"

namespace voxtrel {

/// The default source of a sound server that speaks PulseAudio's protocol, PipeWire included.
/// Thread: the main thread.
class PulseMicrophone final : public Microphone {
 public:
  std::unique_ptr<MicrophoneTap> openTap(MicrophoneTapOptions options) override;
};

}  // namespace voxtrel
