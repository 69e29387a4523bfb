#include "quillback/app/ChosenBackend.h"

#include <utility>

#include "quillback/recognition/Whisper.h"
#include "quillback/recognition/process/RecogniserProcess.h"
#include "quillback/recognition/sphinx/SphinxBackend.h"

namespace voxtrel::quillback {
namespace {

/// One sentence, without a full stop.
std::string problemOf(const StoreFault& fault, const std::string& model) {
  switch (fault.kind) {
    case StoreFault::Kind::absent:
      return "The weights of " + model + " are missing";
    case StoreFault::Kind::embedded:
      return "The weights of " + model +
             " were never fetched: setup was run before Whisper was built in";
    case StoreFault::Kind::damaged:
      break;
  }
  return "The weights of " + model + " are damaged (" + fault.why + ")";
}

std::string embeddedLine(const std::string& language) {
  const std::string line = "Using the embedded English recogniser";
  const bool isEnglish = language == "auto" || language == "en";
  return isEnglish ? line : line + "; other languages need Whisper";
}

RecogniserOptions::Family familyOf(ModelFamily family) {
  return family == ModelFamily::parakeet ? RecogniserOptions::Family::parakeet
                                         : RecogniserOptions::Family::whisper;
}

std::unique_ptr<RecogniserBackend> makeEmbedded() {
  return std::make_unique<SphinxBackend>(sphinxModelFolder());
}

/// The command of a recogniser's process: this program. What it recognises with is not secret; what the
/// settings say about the user's words is read there.
std::vector<std::string> servedCommand(const std::vector<std::string>& rest) {
  std::vector<std::string> words{"/proc/self/exe", "recognise"};
  words.insert(words.end(), rest.begin(), rest.end());
  return words;
}

}  // namespace

ChosenBackend::ChosenBackend(Sources sources, EngineSettings settings)
    : sources_(std::move(sources)), settings_(std::move(settings)) {}

LoadReport ChosenBackend::load() {
  if (!sources_.isWhisperBuiltIn) return loadEmbedded(embeddedLine(settings_.language));
  const auto stored = sources_.findWeights();
  if (!stored) return loadEmbedded(errorLine(problemOf(stored.error(), settings_.chosenModel())));
  bool hasFallenBack = false;
  backend_ = sources_.whisper(*stored, [this, &hasFallenBack] {
    hasFallenBack = true;
    return sources_.embedded();
  });
  LoadReport report = backend_->load();
  if (hasFallenBack) report.lines.push_back("To repair the model, run " + setupCommand() + ".");
  return report;
}

LoadReport ChosenBackend::loadEmbedded(std::string line) {
  backend_ = sources_.embedded();
  LoadReport report = backend_->load();
  report.lines.insert(report.lines.begin(), std::move(line));
  return report;
}

/// What is wrong, what to do about it, and what works until then.
std::string ChosenBackend::errorLine(const std::string& problem) const {
  return "[quillback] ERROR " + problem + ". Run " + setupCommand() +
         ". Until then the embedded English recogniser is used.";
}

std::string ChosenBackend::setupCommand() const {
  return "\"quillback setup --model " + settings_.chosenModel() + "\"";
}

std::unique_ptr<RecogniserBackend> makeBackend(const EngineSettings& settings,
                                               const std::string& home) {
  ChosenBackend::Sources sources;
  sources.isWhisperBuiltIn = isWhisperBuiltIn();
  sources.findWeights = [home, model = settings.chosenModel()] {
    return inspectStore(home, model);
  };
  sources.whisper = [model = settings.chosenModel()](const StoredModel& /*stored*/,
                                                     ChosenBackend::MakeBackend fallback) {
    return std::make_unique<RecogniserProcess>(servedCommand({"model", model}), std::move(fallback),
                                               RecogniserLimits(), processorVariants());
  };
  sources.embedded = makeEmbedded;
  return std::make_unique<ChosenBackend>(std::move(sources), settings);
}

std::unique_ptr<RecogniserBackend> makeServedBackend(const std::vector<std::string>& words,
                                                     const EngineSettings& settings,
                                                     const std::string& home) {
  if (words == std::vector<std::string>{"embedded"}) return makeEmbedded();
  if (words.size() < 2) return nullptr;
  RecogniserOptions options;
  std::size_t used = 0;
  if (words[0] == "model") {
    const auto stored = inspectStore(home, words[1]);
    if (!stored) return nullptr;
    options = {familyOf(stored->family), stored->weightsFile, stored->voiceDetectionFile,
               settings.language,        settings.translate,  settings.prompt,
               settings.words,           settings.threads};
    used = 2;
  } else if (words.size() > 2 && words[0] == "file") {
    const bool isParakeet = words[1] == kParakeet;
    options.family = familyOf(isParakeet ? ModelFamily::parakeet : ModelFamily::whisper);
    options.weightsFile = words[2];
    used = 3;
  } else {
    return nullptr;
  }
  if (words.size() == used + 1) options.processorVariant = std::atoi(words[used].c_str());
  if (words.size() > used + 1) return nullptr;
  return makeWhisperBackend(options);
}

tl::expected<void, std::string> tryWeights(const std::string& path, ModelFamily family) {
  const std::string name(family == ModelFamily::parakeet ? kParakeet : kWhisper);
  RecogniserProcess process(servedCommand({"file", name, path}), nullptr, RecogniserLimits(),
                            processorVariants());
  const LoadReport report = process.load();
  if (report.isUsable) return {};
  return tl::unexpected(report.lines.empty() ? "it cannot be loaded" : report.lines.front());
}

}  // namespace voxtrel::quillback
