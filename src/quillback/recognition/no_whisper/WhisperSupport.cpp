#include "quillback/recognition/WhisperSupport.h"

namespace voxtrel::quillback {

bool isWhisperBuiltIn() {
  return false;
}

std::unique_ptr<SpeechEngine> makeWhisperEngine(const std::string& /*weightsFile*/,
                                                const SpeechSettings& /*settings*/) {
  return nullptr;
}

}  // namespace voxtrel::quillback
