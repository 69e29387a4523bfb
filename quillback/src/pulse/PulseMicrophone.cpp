#include "pulse/PulseMicrophone.h"

#include <utility>

#include "pulse/PulseCapture.h"

namespace quillback {

std::unique_ptr<Capture> PulseMicrophone::open(Listener listener) {
  auto capture = std::make_unique<PulseCapture>(loop_, std::move(listener));
  capture->start();
  return capture;
}

}  // namespace quillback
