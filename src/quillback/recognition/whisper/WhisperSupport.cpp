#include "quillback/recognition/WhisperSupport.h"

#include "quillback/recognition/whisper/PhysicalCores.h"
#include "quillback/recognition/whisper/WhisperEngine.h"

namespace voxtrel::quillback {

bool isWhisperBuiltIn() {
  return true;
}

std::unique_ptr<SpeechEngine> makeWhisperEngine(const std::string& weightsFile,
                                                const SpeechSettings& settings) {
  return std::make_unique<WhisperEngine>(weightsFile, settings, physicalCores(kCpuFolder));
}

}  // namespace voxtrel::quillback
