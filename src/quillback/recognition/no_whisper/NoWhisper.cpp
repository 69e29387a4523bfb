#include "quillback/recognition/Whisper.h"

namespace voxtrel::quillback {

bool isWhisperBuiltIn() {
  return false;
}

std::unique_ptr<RecogniserBackend> makeWhisperBackend(const std::string& /*weightsFile*/,
                                                      const WhisperOptions& /*options*/) {
  return nullptr;
}

}  // namespace voxtrel::quillback
