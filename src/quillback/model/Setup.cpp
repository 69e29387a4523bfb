#include "quillback/model/Setup.h"

#include <csignal>
#include <utility>

#include "common/posix/StopSignals.h"
#include "quillback/model/ModelStore.h"
#include "quillback/model/SetupFailure.h"
#include "quillback/model/SetupRun.h"

namespace voxtrel::quillback {

namespace {

using JobResult = tl::expected<SetupJob, SetupFailure>;

JobResult wrongUse(const std::string& what) {
  return tl::unexpected(SetupFailure{SetupExit::usage, std::string(kSetupFailed) + what});
}

/// The user's own weights: those of `options.file`, or those that are in the store.
JobResult customJob(const SetupOptions& options, const std::string& model) {
  const bool isName = isModelName(model) && model != kAdvised;
  SetupJob job{{model, ModelFamily::whisper, {"ggml-" + model + ".bin", 0, "", ""}}, true};
  if (!options.file.empty()) {
    if (isName) return job;
    return wrongUse("\"" + model +
                    R"(" cannot name a model. Use letters, digits, ".", "-" and "_".)");
  }
  const auto manifest = isName ? readManifest(options.home, model) : std::nullopt;
  if (!manifest || !manifest->isCustom || manifest->files.empty()) {
    return wrongUse("unknown model \"" + model + "\". Known models: " + namesOf(options.pins) +
                    ".");
  }
  const Manifest::File& file = manifest->files.front();
  job.pin.weights = {file.name, file.sizeBytes, file.sha256, ""};
  job.pin.family = familyOf(manifest->recogniser).value_or(ModelFamily::whisper);
  return job;
}

/// The application always asks for the window's model; the settings' own choice counts more.
std::string modelToSetUp(const SetupOptions& options) {
  const bool isReplaced = options.hasWhisper && options.file.empty() &&
                          options.model == kWindowModel && !options.chosen.empty();
  return isReplaced ? options.chosen : options.model;
}

JobResult jobFor(const SetupOptions& options, const std::string& model) {
  const ModelPin* const pin = pinNamed(options.pins, model);
  JobResult job = pin != nullptr ? SetupJob{*pin, false} : customJob(options, model);
  if (!job) return job;
  if (!options.baseUrl.empty() && !isBaseUrl(options.baseUrl)) {
    return wrongUse(
        "QUILLBACK_MODEL_URL is not an address. It must begin with \"https://\" or \"http://\" and "
        "a host.");
  }
  if (!options.file.empty() && !options.hasWhisper) {
    return wrongUse("this build has no Whisper and cannot use weights.");
  }
  return job;
}

SetupResult attemptSetup(const SetupOptions& options, Output& output) {
  const std::string model = modelToSetUp(options);
  JobResult job = jobFor(options, model);
  if (!job) return tl::unexpected(job.error());
  if (model != options.model) {
    output.print("The settings choose " + model + "; it is set up in place of " + options.model +
                 ".");
  }
  // Writing to a closed pipe or past a file size limit must fail, not end the process.
  const StopSignals stop{StopSignals::InheritedIgnores::keep, {SIGPIPE, SIGXFSZ}};
  {
    SetupRun run(options, std::move(*job), stop, output);
    auto done = options.file.empty() ? run.download() : run.copyFile();
    if (!done || !options.hasWhisper || model != options.chosen) return done;
  }
  return noteChosen(options.home, model, "quillback " + options.version,
                    [&](ModelFolder& folder) { return folder.lock(stop, output); })
      .map([&options] { options.onStep("noted"); });
}

}  // namespace

int runSetup(const SetupOptions& options, Output& output) {
  const SetupResult result = attemptSetup(options, output);
  if (result) return static_cast<int>(SetupExit::done);
  output.print(result.error().line);
  return static_cast<int>(result.error().exit);
}

}  // namespace voxtrel::quillback
