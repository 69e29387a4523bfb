#pragma once

#include <memory>
#include <string>
#include <vector>

#include "quillback/recognition/SpeechEngine.h"
#include "quillback/recognition/SpeechSettings.h"

struct whisper_context;
struct whisper_state;
struct whisper_full_params;

namespace voxtrel::quillback {

/// Whisper: hears everything first, then recognises it as a whole.
/// Thread: one.  Owns: the model.
/// Fails by: a LoadReport with an error line; text that is not there.
class WhisperEngine final : public SpeechEngine {
 public:
  /// `threads`: how many work at the same time.
  WhisperEngine(std::string weightsFile, SpeechSettings settings, int threads);
  WhisperEngine(const WhisperEngine&) = delete;
  WhisperEngine& operator=(const WhisperEngine&) = delete;
  ~WhisperEngine() override;

  LoadReport load() override;
  void begin(const std::atomic<bool>& isDropped) override;
  void hear(std::span<const std::int16_t> samples) override;
  Transcription finish() override;

 private:
  struct Free {
    void operator()(whisper_context* context) const;
  };

  static bool isDropped(void* engine);
  static bool mayEncode(whisper_context* context, whisper_state* state, void* engine);
  whisper_full_params parameters();
  std::string text() const;
  std::chrono::microseconds encodeTime() const;

  const std::string weightsFile_;
  SpeechSettings settings_;
  const int threads_;
  std::unique_ptr<whisper_context, Free> model_;
  std::vector<float> samples_;
  const std::atomic<bool>* isDropped_ = nullptr;
  int encodings_ = 0;
};

}  // namespace voxtrel::quillback
