#include "quillback/app/ChosenBackend.h"

#include <utility>

#include "quillback/recognition/Whisper.h"
#include "quillback/recognition/sphinx/SphinxBackend.h"

namespace voxtrel::quillback {
namespace {

/// One sentence, without a full stop.
std::string problemOf(const StoreFault& fault) {
  switch (fault.kind) {
    case StoreFault::Kind::absent:
      return "The weights of Whisper are missing";
    case StoreFault::Kind::embedded:
      return "The weights of Whisper were never fetched: setup was run before Whisper was built in";
    case StoreFault::Kind::damaged:
      break;
  }
  return "The weights of Whisper are damaged (" + fault.why + ")";
}

std::string embeddedLine(const std::string& language) {
  const std::string line = "Using the embedded English recogniser";
  const bool isEnglish = language == "auto" || language == "en";
  return isEnglish ? line : line + "; other languages need Whisper";
}

}  // namespace

ChosenBackend::ChosenBackend(Sources sources, EngineSettings settings)
    : sources_(std::move(sources)), settings_(std::move(settings)) {}

LoadReport ChosenBackend::load() {
  if (!sources_.isWhisperBuiltIn) return loadEmbedded(embeddedLine(settings_.language));
  const auto weightsFile = sources_.findWeights();
  if (!weightsFile) return loadEmbedded(errorLine(problemOf(weightsFile.error())));
  backend_ = sources_.whisper(*weightsFile);
  LoadReport report = backend_->load();
  if (report.isUsable) return report;
  return loadEmbedded(errorLine("The weights of Whisper cannot be loaded"));
}

LoadReport ChosenBackend::loadEmbedded(std::string line) {
  backend_ = sources_.embedded();
  LoadReport report = backend_->load();
  report.lines.insert(report.lines.begin(), std::move(line));
  return report;
}

/// What is wrong, what to do about it, and what works until then.
std::string ChosenBackend::errorLine(const std::string& problem) const {
  return "[quillback] ERROR " + problem + ". Run \"quillback setup --model " + settings_.model +
         "\". Until then the embedded English recogniser is used.";
}

std::unique_ptr<RecogniserBackend> makeBackend(const EngineSettings& settings,
                                               const std::string& home) {
  ChosenBackend::Sources sources;
  sources.isWhisperBuiltIn = isWhisperBuiltIn();
  sources.findWeights = [home, model = settings.model] {
    return inspectStore(home, model).map(&StoredModel::weightsFile);
  };
  sources.whisper = [options = WhisperOptions{settings.language, settings.translate}](
                        const std::string& weightsFile) {
    return makeWhisperBackend(weightsFile, options);
  };
  sources.embedded = [] { return std::make_unique<SphinxBackend>(sphinxModelFolder()); };
  return std::make_unique<ChosenBackend>(std::move(sources), settings);
}

}  // namespace voxtrel::quillback
