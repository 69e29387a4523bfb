#include "quillback/recognition/whisper/SileroDetector.h"

#include <whisper.h>

#include <exception>
#include <filesystem>

namespace voxtrel::quillback {

void SileroDetector::Free::operator()(whisper_vad_context* context) const {
  whisper_vad_free(context);
}

std::unique_ptr<SileroDetector> SileroDetector::load(const std::string& weightsFile) {
  // The library reads sizes from the file's start without a doubt about them.
  constexpr std::uintmax_t kFileBytes = 885'098;
  std::error_code error;
  if (std::filesystem::file_size(weightsFile, error) != kFileBytes || error) return nullptr;
  whisper_vad_context_params parameters = whisper_vad_default_context_params();
  parameters.n_threads = 1;  // a frame is too small to share
  parameters.use_gpu = false;
  try {
    Context context(whisper_vad_init_from_file_with_params(weightsFile.c_str(), parameters));
    if (!context) return nullptr;
    return std::unique_ptr<SileroDetector>(new SileroDetector(std::move(context)));
  } catch (const std::exception&) {
    return nullptr;
  }
}

void SileroDetector::reset() {
  whisper_vad_reset_state(context_.get());
}

float SileroDetector::probability(std::span<const float> frame) {
  const auto count = static_cast<int>(frame.size());
  if (!whisper_vad_detect_speech_no_reset(context_.get(), frame.data(), count)) return 0;
  return *whisper_vad_probs(context_.get());
}

}  // namespace voxtrel::quillback
