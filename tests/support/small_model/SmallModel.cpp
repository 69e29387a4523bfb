// The engine's setup with a model of the test's own, which can be small, and with crashes on demand.

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>

#include "quillback/model/ModelStore.h"
#include "quillback/model/Setup.h"
#include "quillback/model/SetupExit.h"
#include "support/small_model/StdoutOutput.h"

using namespace voxtrel::quillback;

namespace {

using Arguments = std::map<std::string, std::string>;

/// Kills the process at the named step's given occurrence: "progress:3".
class Death {
 public:
  explicit Death(const std::string& when) : step_(when.substr(0, when.find(':'))) {
    if (when.find(':') != std::string::npos) left_ = std::atoi(when.c_str() + step_.size() + 1);
  }
  void onStep(std::string_view step) {
    if (step == step_ && --left_ == 0) std::raise(SIGKILL);
  }

 private:
  std::string step_;
  int left_ = 1;
};

/// "--name value" pairs; false where there is something else.
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
  if (arguments.contains("--bytes")) {
    options.pins.front().sizeBytes = std::stoull(arguments["--bytes"]);
    options.pins.front().sha256 = arguments["--sha256"];
  }
  const auto milliseconds = [&arguments](const char* name, std::chrono::milliseconds& value) {
    if (arguments.contains(name)) value = std::chrono::milliseconds(std::stoi(arguments[name]));
  };
  milliseconds("--stall-ms", options.limits.stall);
  milliseconds("--retry-ms", options.limits.beforeRetry);
  return options;
}

/// Prints the store's state as the recogniser's side sees it.
int inspect(const SetupOptions& options) {
  const StoreState state = inspectStore(options.home, options.model);
  std::printf("%d|%s|%s\n", static_cast<int>(state.kind), state.weightsFile.c_str(),
              state.why.c_str());
  return 0;
}

}  // namespace

int main(int argumentCount, char** words) {
  Arguments arguments;
  if (!parse(argumentCount, words, arguments)) return static_cast<int>(SetupExit::usage);
  SetupOptions options = optionsOf(arguments);
  if (arguments.contains("--inspect")) return inspect(options);
  Death death(arguments["--die-at"]);
  options.onStep = [&death](std::string_view step) { death.onStep(step); };
  StdoutOutput output;
  return runSetup(options, output);
}
