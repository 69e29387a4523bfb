#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <tl/expected.hpp>

#include "quillback/model/ModelStore.h"
#include "quillback/recognition/RecogniserBackend.h"
#include "quillback/settings/EngineSettings.h"

namespace voxtrel::quillback {

/// The best backend that works: the model of the settings if it is in the store and loads, else the
/// embedded recogniser. Chosen while loading.
/// Thread: one.  Owns: the chosen backend.
/// Fails by: a LoadReport that is not usable, when the embedded recogniser cannot be loaded either.
class ChosenBackend final : public RecogniserBackend {
 public:
  using MakeBackend = std::function<std::unique_ptr<RecogniserBackend>()>;
  /// Where the backends come from.
  struct Sources {
    bool isWhisperBuiltIn = false;
    std::function<tl::expected<StoredModel, StoreFault>()> findWeights;
    /// A backend for weights, which uses the fallback itself when they fail it.
    std::function<std::unique_ptr<RecogniserBackend>(const StoredModel& stored,
                                                     MakeBackend fallback)>
        whisper;
    MakeBackend embedded;
  };

  /// `settings` name the model and the language.
  ChosenBackend(Sources sources, EngineSettings settings);

  LoadReport load() override;
  void begin(const std::atomic<bool>& isDropped) override { backend_->begin(isDropped); }
  void feed(std::span<const std::int16_t> samples) override { backend_->feed(samples); }
  Transcription finish() override { return backend_->finish(); }
  void drop() override { backend_->drop(); }
  void rest() override { backend_->rest(); }

 private:
  LoadReport loadEmbedded(std::string line);
  [[nodiscard]] std::string errorLine(const std::string& problem) const;
  [[nodiscard]] std::string setupCommand() const;

  const Sources sources_;
  const EngineSettings settings_;
  std::unique_ptr<RecogniserBackend> backend_;
};

/// The backend for these settings; the model store is below the user's `home`. Models run in a process of
/// their own.
std::unique_ptr<RecogniserBackend> makeBackend(const EngineSettings& settings,
                                               const std::string& home);

/// What that process runs, by the words after its command: "embedded", or "model NAME" for a model in the
/// store, or "file FAMILY PATH" to try weights. Null for other words.
std::unique_ptr<RecogniserBackend> makeServedBackend(const std::vector<std::string>& words,
                                                     const EngineSettings& settings,
                                                     const std::string& home);

/// Loads weights in a process of their own.
/// Fails by: what is wrong with them.
tl::expected<void, std::string> tryWeights(const std::string& path, ModelFamily family);

}  // namespace voxtrel::quillback
