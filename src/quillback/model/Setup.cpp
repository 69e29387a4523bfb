#include "quillback/model/Setup.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <optional>

#include "common/posix/StopSignals.h"
#include "common/settings/ConfigManager.h"
#include "quillback/model/Download.h"
#include "quillback/model/Files.h"
#include "quillback/model/HttpLibrary.h"
#include "quillback/model/Manifest.h"
#include "quillback/model/ModelStore.h"
#include "quillback/model/SetupExit.h"
#include "quillback/model/StoreLock.h"

namespace voxtrel::quillback {

namespace {

using Kind = StoreState::Kind;
using Failure = std::optional<SetupFailure>;

constexpr const char* kManifestName = "manifest.json";

/// One run of setup for one known model.
class Setup {
 public:
  Setup(const SetupOptions& options, const ModelPin& pin, Output& output)
      : options_(options),
        pin_(pin),
        output_(output),
        folder_(ConfigManager(options.home).weightsFolder(pin.model)),
        filePath_(folder_ + "/" + pin.fileName) {}

  Failure run();

 private:
  Kind look() const;
  bool sayIfReady(Kind kind) const;
  Failure makeReady(Kind kind);
  Failure makeEmbedded();
  Failure takeUpFile();
  Failure download();
  Failure writeManifest(std::string_view recogniser, std::vector<Manifest::File> files);
  Failure failureOf(int error) const;

  const SetupOptions& options_;
  const ModelPin& pin_;
  Output& output_;
  std::string folder_;
  std::string filePath_;
  // Writing to a closed pipe or past a file size limit is an error here, not the end.
  StopSignals stop_{StopSignals::InheritedIgnores::keep, {SIGPIPE, SIGXFSZ}};
};

Failure Setup::failureOf(int error) const {
  return error == 0 ? std::nullopt : Failure(writeFailure(error, folder_));
}

/// Weights that are complete, but of another version than the pinned one, are as good as damaged.
Kind Setup::look() const {
  const StoreState state = inspectStore(options_.home, pin_.model);
  if (state.kind != Kind::complete) return state.kind;
  const auto text = readSmallFile(folder_ + "/" + kManifestName, kMaxManifestBytes);
  const auto parsed = parseManifest(text.value_or(""));
  const auto* manifest = std::get_if<Manifest>(&parsed);
  const Manifest::File wanted{pin_.fileName, pin_.sizeBytes, pin_.sha256};
  const bool isPinned = manifest && std::ranges::count(manifest->files, wanted) > 0;
  return isPinned ? Kind::complete : Kind::damaged;
}

bool Setup::sayIfReady(Kind kind) const {
  if (!options_.hasWhisper) return false;
  if (kind == Kind::complete) {
    output_.print("The weights of " + pin_.model + " are complete already; nothing to do.");
  }
  return kind == Kind::complete;
}

Failure Setup::run() {
  if (sayIfReady(look())) return std::nullopt;
  if (auto failure = failureOf(makeFolders(folder_))) return failure;
  StoreLock lock;
  if (auto failure = lock.take(folder_, stop_, output_)) return failure;
  options_.onStep("locked");
  // Whoever had the lock may have done it all.
  const Kind kind = look();
  if (sayIfReady(kind)) return std::nullopt;
  return options_.hasWhisper ? makeReady(kind) : makeEmbedded();
}

Failure Setup::makeEmbedded() {
  // Weights that another build can use stay as they are.
  const StoreState state = inspectStore(options_.home, pin_.model);
  if (state.kind == Kind::absent || state.kind == Kind::damaged) {
    if (auto failure = writeManifest(kPocketSphinx, {})) return failure;
  }
  output_.print(
      "This build has no Whisper, so nothing is downloaded; its embedded recogniser, "
      "PocketSphinx for English, is ready.");
  return std::nullopt;
}

Failure Setup::makeReady(Kind kind) {
  if (kind == Kind::damaged) {
    output_.print("The store is damaged or of another version; repairing it.");
    // As long as the manifest is there, the weights count as present.
    if (auto failure = failureOf(removeFile(folder_ + "/" + kManifestName))) return failure;
    if (auto failure = failureOf(syncFolder(folder_))) return failure;
  }
  if (auto failure = takeUpFile()) return failure;
  if (!fileSize(filePath_)) {
    if (auto failure = download()) return failure;
  }
  for (const char* leftover : {".part", ".part.json"}) {
    if (auto failure = failureOf(removeFile(filePath_ + leftover))) return failure;
  }
  if (auto failure = failureOf(syncFolder(folder_))) return failure;
  const Manifest::File file{pin_.fileName, pin_.sizeBytes, pin_.sha256};
  if (auto failure = writeManifest(kWhisper, {file})) return failure;
  output_.print("The weights of " + pin_.model + " are complete.");
  return std::nullopt;
}

/// Keeps weights that lack only their manifest; removes others.
Failure Setup::takeUpFile() {
  const std::optional<std::uint64_t> sizeBytes = fileSize(filePath_);
  if (!sizeBytes) return std::nullopt;
  if (*sizeBytes == pin_.sizeBytes) {
    output_.print("Checking the weights that are there.");
    PartFile file;
    int error = file.open(filePath_);
    if (error == 0) error = file.hashAll(stop_);
    if (error == ECANCELED) return interruption();
    if (error != 0) return failureOf(error);
    if (file.digest() == pin_.sha256) return std::nullopt;
  }
  output_.print("The weights that are there are not the expected ones; removing them.");
  return failureOf(removeFile(filePath_));
}

Failure Setup::download() {
  const HttpLibrary library;
  std::string baseUrl = options_.baseUrl.empty() ? pin_.baseUrl : options_.baseUrl;
  while (baseUrl.ends_with('/')) baseUrl.pop_back();
  Download download({pin_, folder_, baseUrl, options_.certificates, "quillback/" + options_.version,
                     options_.limits, stop_, output_, options_.onStep});
  if (auto failure = download.run()) return failure;
  if (std::rename(download.partPath().c_str(), filePath_.c_str()) != 0) return failureOf(errno);
  options_.onStep("renamed");
  return std::nullopt;
}

Failure Setup::writeManifest(std::string_view recogniser, std::vector<Manifest::File> files) {
  const Manifest manifest{pin_.model, std::string(recogniser), std::move(files),
                          "quillback " + options_.version};
  Failure failure = failureOf(replaceFile(folder_, kManifestName, formatManifest(manifest)));
  if (!failure) options_.onStep("manifest");
  return failure;
}

SetupFailure unknownModel(const SetupOptions& options) {
  std::string line = "Setup failed: unknown model \"" + options.model + "\". Known models:";
  for (const ModelPin& pin : options.pins) line += " " + pin.model;
  return {SetupExit::usage, line + "."};
}

Failure attemptSetup(const SetupOptions& options, Output& output) {
  const auto pin = std::ranges::find(options.pins, options.model, &ModelPin::model);
  if (pin == options.pins.end()) return unknownModel(options);
  if (!options.baseUrl.empty() && !isBaseUrl(options.baseUrl)) {
    return SetupFailure{SetupExit::usage,
                        "Setup failed: QUILLBACK_MODEL_URL is not an address. It begins with "
                        "\"https://\" or \"http://\" and a host."};
  }
  return Setup(options, *pin, output).run();
}

}  // namespace

int runSetup(const SetupOptions& options, Output& output) {
  const Failure failure = attemptSetup(options, output);
  if (!failure) return static_cast<int>(SetupExit::done);
  output.print(failure->line);
  return static_cast<int>(failure->exit);
}

}  // namespace voxtrel::quillback
