#include "quillback/app/ChosenEngine.h"

#include <utility>

#include "quillback/recognition/WhisperSupport.h"
#include "quillback/recognition/sphinx/SphinxEngine.h"

namespace voxtrel::quillback {

ChosenEngine::ChosenEngine(Sources sources, std::string language)
    : sources_(std::move(sources)), language_(std::move(language)) {}

LoadReport ChosenEngine::load() {
  const StoreState store = sources_.store();
  RecogniserChoice choice = chooseRecogniser(sources_.isWhisperBuiltIn, store, language_);
  if (!choice.isWhisper) return loadEmbedded(std::move(choice.line));
  engine_ = sources_.whisper(store.weightsFile);
  LoadReport report = engine_->load();
  if (report.isUsable) return report;
  return loadEmbedded(whisperErrorLine("The weights of Whisper cannot be loaded"));
}

LoadReport ChosenEngine::loadEmbedded(std::string line) {
  engine_ = sources_.embedded();
  LoadReport report = engine_->load();
  report.lines.insert(report.lines.begin(), std::move(line));
  return report;
}

std::unique_ptr<SpeechEngine> makeSpeechEngine(const SpeechSettings& settings,
                                               const std::string& home) {
  ChosenEngine::Sources sources;
  sources.isWhisperBuiltIn = isWhisperBuiltIn();
  sources.store = [home, model = settings.model] { return inspectStore(home, model); };
  sources.whisper = [settings](const std::string& weightsFile) {
    return makeWhisperEngine(weightsFile, settings);
  };
  sources.embedded = [] { return std::make_unique<SphinxEngine>(sphinxModelFolder()); };
  return std::make_unique<ChosenEngine>(std::move(sources), settings.language);
}

}  // namespace voxtrel::quillback
