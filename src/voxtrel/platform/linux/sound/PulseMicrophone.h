#pragma once

#include "voxtrel/platform/Microphone.h"

namespace voxtrel {

/// The sound server's default source. Opening does not wait for the server.
/// Thread: the main thread.
class PulseMicrophone final : public Microphone {
 public:
  std::unique_ptr<MicrophoneTap> openTap(MicrophoneTapOptions options) override;
};

}  // namespace voxtrel
