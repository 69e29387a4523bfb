#pragma once

#include <memory>

#include "quillback/recognition/Whisper.h"
#include "quillback/recognition/speech/SpeechModel.h"

struct parakeet_context;

namespace voxtrel::quillback {

/// A Parakeet model. It finds the language by itself and takes neither a prompt nor a language, and it
/// does not translate.
/// Thread: one.  Owns: the weights in memory.
/// Fails by: a LoadReport that is not usable; later by `hasFailed`.
class ParakeetModel final : public SpeechModel {
 public:
  explicit ParakeetModel(RecogniserOptions options);
  ParakeetModel(const ParakeetModel&) = delete;
  ParakeetModel& operator=(const ParakeetModel&) = delete;
  ~ParakeetModel() override;

  LoadReport load() override;
  void begin() override {}
  Heard recognise(std::span<const float> samples, const std::atomic<bool>& isDropped) override;
  [[nodiscard]] std::size_t maxSamples() const override;

 private:
  struct Free {
    void operator()(parakeet_context* context) const;
  };

  std::unique_ptr<parakeet_context, Free> model_;
  const RecogniserOptions options_;
};

}  // namespace voxtrel::quillback
