#include "quillback/recognition/Whisper.h"

namespace voxtrel::quillback {

bool isWhisperBuiltIn() {
  return false;
}

std::unique_ptr<RecogniserBackend> makeWhisperBackend(const RecogniserOptions& /*options*/) {
  return nullptr;
}

int processorVariants() {
  return 1;
}

std::string describeWhisper(int /*threads*/) {
  return {};
}

std::optional<double> measureProcessor() {
  return std::nullopt;
}

}  // namespace voxtrel::quillback
