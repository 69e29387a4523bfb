#pragma once

#include <functional>
#include <memory>
#include <string>

#include "quillback/app/RecogniserChoice.h"
#include "quillback/recognition/SpeechEngine.h"
#include "quillback/recognition/SpeechSettings.h"

namespace voxtrel::quillback {

/// The engine that can be had: it looks at the store while it loads, and takes the embedded one where
/// Whisper's weights cannot be used.
/// Thread: one.  Owns: the chosen engine.
/// Fails by: a LoadReport, when not even the embedded engine can be loaded.
class ChosenEngine final : public SpeechEngine {
 public:
  /// Where engines come from.
  struct Sources {
    bool isWhisperBuiltIn = false;
    std::function<StoreState()> store;
    std::function<std::unique_ptr<SpeechEngine>(const std::string& weightsFile)> whisper;
    std::function<std::unique_ptr<SpeechEngine>()> embedded;
  };

  ChosenEngine(Sources sources, std::string language);

  LoadReport load() override;
  void begin(const std::atomic<bool>& isDropped) override { engine_->begin(isDropped); }
  void hear(std::span<const std::int16_t> samples) override { engine_->hear(samples); }
  Transcription finish() override { return engine_->finish(); }

 private:
  LoadReport loadEmbedded(std::string line);

  const Sources sources_;
  const std::string language_;
  std::unique_ptr<SpeechEngine> engine_;
};

/// The engine for these settings; `home` is the user's, where the store is.
std::unique_ptr<SpeechEngine> makeSpeechEngine(const SpeechSettings& settings,
                                               const std::string& home);

}  // namespace voxtrel::quillback
