// The engine's setup with a small model, and with crashes on demand.

#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>

#include "quillback/model/ModelStore.h"
#include "quillback/model/Setup.h"
#include "quillback/model/SetupFailure.h"

using namespace voxtrel::quillback;

namespace {

using Arguments = std::map<std::string, std::string>;

/// Prints to standard output, each line in one write.
/// Thread: any.
class StdoutOutput final : public Output {
 public:
  void print(std::string_view line) override {
    const std::string text = std::string(line) + '\n';
    [[maybe_unused]] const ssize_t written = ::write(STDOUT_FILENO, text.data(), text.size());
  }
};

/// Kills the process at a step: "progress:3" at its third occurrence.
class Crash {
 public:
  explicit Crash(const std::string& when) : step_(when.substr(0, when.find(':'))) {
    if (when.find(':') != std::string::npos) left_ = std::atoi(when.c_str() + step_.size() + 1);
  }
  void onStep(std::string_view step) {
    if (step == step_ && --left_ == 0) std::raise(SIGKILL);
  }

 private:
  std::string step_;
  int left_ = 1;
};

/// Parses "--name value" pairs; false if there is anything else.
bool parse(int argumentCount, char** words, Arguments& arguments) {
  for (int i = 1; i + 1 < argumentCount; i += 2) arguments[words[i]] = words[i + 1];
  return argumentCount % 2 == 1;
}

SetupOptions optionsOf(Arguments& arguments) {
  SetupOptions options;
  options.home = arguments["--home"];
  options.version = "0.0.1";
  options.hasWhisper = arguments["--whisper"] == "on";
  options.certificates = arguments["--certificates"];
  if (const char* url = std::getenv("QUILLBACK_MODEL_URL")) options.baseUrl = url;
  if (arguments.contains("--model")) options.model = arguments["--model"];
  options.chosen = arguments["--chosen"];
  options.file = arguments["--file"];
  if (arguments.contains("--bytes")) {
    for (ModelPin& pin : options.pins) {
      pin.weights.sizeBytes = std::stoull(arguments["--bytes"]);
      pin.weights.sha256 = arguments["--sha256"];
    }
  }
  if (arguments.contains("--voice-bytes")) {
    options.voiceDetection.sizeBytes = std::stoull(arguments["--voice-bytes"]);
    options.voiceDetection.sha256 = arguments["--voice-sha256"];
  }
  if (arguments.contains("--unloadable")) {
    options.tryWeights = [why = arguments["--unloadable"]](const std::string&, ModelFamily) {
      return tl::expected<void, std::string>(tl::unexpect, why);
    };
  }
  const auto milliseconds = [&arguments](const char* name, std::chrono::milliseconds& value) {
    if (arguments.contains(name)) value = std::chrono::milliseconds(std::stoi(arguments[name]));
  };
  milliseconds("--stall-ms", options.limits.stallTimeout);
  milliseconds("--retry-ms", options.limits.retryDelay);
  return options;
}

/// Prints the store's state as the recogniser sees it: a word and the paths of the weights and the
/// voice detection.
int inspect(const SetupOptions& options) {
  constexpr std::array kWords{"absent", "embedded", "damaged"};
  const auto stored = inspectStore(options.home, options.model);
  const char* word = stored ? "complete" : kWords.at(static_cast<std::size_t>(stored.error().kind));
  std::printf("%s|%s|%s\n", word, stored ? stored->weightsFile.c_str() : "",
              stored ? stored->voiceDetectionFile.c_str() : "");
  return 0;
}

}  // namespace

int main(int argumentCount, char** words) {
  Arguments arguments;
  if (!parse(argumentCount, words, arguments)) return static_cast<int>(SetupExit::usage);
  SetupOptions options = optionsOf(arguments);
  if (arguments.contains("--inspect")) return inspect(options);
  Crash crash(arguments["--die-at"]);
  options.onStep = [&crash](std::string_view step) { crash.onStep(step); };
  StdoutOutput output;
  return runSetup(options, output);
}
