#pragma once

#include <functional>
#include <memory>
#include <string>

#include <tl/expected.hpp>

#include "quillback/model/ModelStore.h"
#include "quillback/recognition/RecogniserBackend.h"
#include "quillback/settings/EngineSettings.h"

namespace voxtrel::quillback {

/// The best backend that works: Whisper if it is built in and its weights load, else the embedded
/// recogniser. Chosen while loading.
/// Thread: one.  Owns: the chosen backend.
/// Fails by: a LoadReport that is not usable, when the embedded recogniser cannot be loaded either.
class ChosenBackend final : public RecogniserBackend {
 public:
  /// Where the backends come from.
  struct Sources {
    bool isWhisperBuiltIn = false;
    std::function<tl::expected<std::string, StoreFault>()> findWeights;
    std::function<std::unique_ptr<RecogniserBackend>(const std::string& weightsFile)> whisper;
    std::function<std::unique_ptr<RecogniserBackend>()> embedded;
  };

  /// `settings` name the model and the language.
  ChosenBackend(Sources sources, EngineSettings settings);

  LoadReport load() override;
  void begin(const std::atomic<bool>& isDropped) override { backend_->begin(isDropped); }
  void feed(std::span<const std::int16_t> samples) override { backend_->feed(samples); }
  Transcription finish() override { return backend_->finish(); }

 private:
  LoadReport loadEmbedded(std::string line);
  std::string errorLine(const std::string& problem) const;

  const Sources sources_;
  const EngineSettings settings_;
  std::unique_ptr<RecogniserBackend> backend_;
};

/// The backend for these settings; the model store is below the user's `home`.
std::unique_ptr<RecogniserBackend> makeBackend(const EngineSettings& settings,
                                               const std::string& home);

}  // namespace voxtrel::quillback
