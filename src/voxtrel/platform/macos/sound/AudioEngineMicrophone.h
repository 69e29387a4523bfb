#pragma once

#include "voxtrel/platform/Microphone.h"

namespace voxtrel {

/// The default input device through AVAudioEngine. Starting an engine takes the main thread some tens of
/// milliseconds. The system may deliver longer buffers than were asked for.
/// Thread: the main thread.
/// Fails by: `onFailure`, also when the device changes its format or goes away.
class AudioEngineMicrophone final : public Microphone {
 public:
  std::unique_ptr<MicrophoneTap> openTap(MicrophoneTapOptions options) override;
};

}  // namespace voxtrel
