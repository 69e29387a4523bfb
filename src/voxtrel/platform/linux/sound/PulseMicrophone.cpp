#include "voxtrel/platform/linux/sound/PulseMicrophone.h"

#include <utility>

#include "voxtrel/platform/linux/sound/PulseTap.h"

namespace voxtrel {

std::unique_ptr<MicrophoneTap> PulseMicrophone::openTap(MicrophoneTapOptions options) {
  auto tap = std::make_unique<PulseTap>(std::move(options));
  tap->start();
  return tap;
}

}  // namespace voxtrel
