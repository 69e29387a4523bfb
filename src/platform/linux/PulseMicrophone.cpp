#include "platform/linux/PulseMicrophone.h"

#include <utility>

#include "platform/linux/PulseTap.h"

namespace voxtrel {

std::unique_ptr<MicrophoneTap> PulseMicrophone::openTap(MicrophoneTapOptions options) {
  auto tap = std::make_unique<PulseTap>(std::move(options));
  tap->start();
  return tap;
}

}  // namespace voxtrel
