#include "recognition/WhisperSupport.h"

#include "whisper/PhysicalCores.h"
#include "whisper/WhisperEngine.h"

namespace quillback {

bool isWhisperBuiltIn() {
  return true;
}

std::unique_ptr<SpeechEngine> makeWhisperEngine(const std::string& weightsFile,
                                                const SpeechSettings& settings) {
  return std::make_unique<WhisperEngine>(weightsFile, settings, physicalCores(kCpuFolder));
}

}  // namespace quillback
