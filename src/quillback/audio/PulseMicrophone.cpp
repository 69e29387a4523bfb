#include "quillback/audio/PulseMicrophone.h"

#include <utility>

#include "quillback/audio/PulseCapture.h"

namespace voxtrel::quillback {

std::unique_ptr<Capture> PulseMicrophone::open(Listener listener) {
  auto capture = std::make_unique<PulseCapture>(loop_, std::move(listener));
  capture->start();
  return capture;
}

}  // namespace voxtrel::quillback
