#include "recognition/WhisperSupport.h"

namespace quillback {

bool isWhisperBuiltIn() {
  return false;
}

std::unique_ptr<SpeechEngine> makeWhisperEngine(const std::string& /*weightsFile*/,
                                                const SpeechSettings& /*settings*/) {
  return nullptr;
}

}  // namespace quillback
