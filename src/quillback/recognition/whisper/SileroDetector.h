#pragma once

#include <memory>
#include <string>

#include "quillback/recognition/speech/SpeechModel.h"

struct whisper_vad_context;

namespace voxtrel::quillback {

/// The library's voice detection, a small network that hears one frame at a time and remembers a little.
/// Thread: one.  Owns: its weights in memory.
/// Fails by: null instead of a detector.
class SileroDetector final : public VoiceDetector {
 public:
  static std::unique_ptr<SileroDetector> load(const std::string& weightsFile);

  void reset() override;
  float probability(std::span<const float> frame) override;

 private:
  struct Free {
    void operator()(whisper_vad_context* context) const;
  };
  using Context = std::unique_ptr<whisper_vad_context, Free>;

  explicit SileroDetector(Context context) : context_(std::move(context)) {}

  const Context context_;
};

}  // namespace voxtrel::quillback
