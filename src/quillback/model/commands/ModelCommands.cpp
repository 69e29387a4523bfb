#include "quillback/model/commands/ModelCommands.h"

#include <sys/stat.h>

#include <filesystem>
#include <system_error>
#include <utility>

#include "common/settings/ConfigManager.h"
#include "common/settings/TextFile.h"
#include "quillback/model/Files.h"
#include "quillback/model/ModelFolder.h"
#include "quillback/model/ModelStore.h"
#include "quillback/model/ProgressLine.h"
#include "quillback/settings/EngineModelKey.h"

namespace voxtrel::quillback {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMaxSettingsBytes = 1 << 20;

SetupResult refused(SetupExit exit, std::string line) {
  return tl::unexpected(SetupFailure{exit, std::move(line)});
}

int exitStatus(const SetupResult& result, Output& output) {
  if (result) return static_cast<int>(SetupExit::done);
  output.print(result.error().line);
  return static_cast<int>(result.error().exit);
}

SetupResult unknownModel(const ModelContext& context, const std::string& name) {
  return refused(SetupExit::usage,
                 "Unknown model \"" + name + "\". Known models: " + namesOf(context.pins) + ".");
}

bool isCustom(const ModelContext& context, const std::string& name) {
  if (!isModelName(name)) return false;
  const auto manifest = readManifest(context.home, name);
  return manifest && manifest->isCustom;
}

std::string writtenBy(const ModelContext& context) {
  return "quillback " + context.version;
}

/// Does not wait for a running setup: that brings the note up to date when it ends.
SetupResult lockIfFree(ModelFolder& folder) {
  return folder.tryLock();
}

SetupResult writeChoice(const std::string& path, const std::string& name) {
  const auto failure = [&path](const std::string& why) {
    return refused(SetupExit::unwritable,
                   "The settings in " + path + " stay as they are: " + why + ".");
  };
  const auto text = readTextFile(path, kMaxSettingsBytes);
  if (!text && !text.error().isMissing) return failure(text.error().reason);
  const auto changed = withEngineModel(text.value_or(""), name);
  if (!changed) return failure(changed.error());

  // A link stays a link.
  std::error_code error;
  fs::path target = fs::canonical(path, error);
  if (error) target = path;
  const std::string folder = target.parent_path();
  struct stat before {};
  const bool isThere = ::stat(target.c_str(), &before) == 0;
  const auto written = makeFolders(folder).and_then([&] {
    return replaceFile(folder, target.filename(), *changed,
                       isThere ? std::optional<mode_t>(before.st_mode) : std::nullopt);
  });
  return written ? SetupResult() : failure(written.error().message());
}

SetupResult choose(const ModelContext& context, const std::string& name, Output& output) {
  if (pinNamed(context.pins, name) == nullptr && !isCustom(context, name)) {
    return unknownModel(context, name);
  }
  if (auto written = writeChoice(ConfigManager(context.home).configPath(), name); !written) {
    return written;
  }
  output.print("The engine uses " + name + " from its next start.");
  if (!inspectStore(context.home, name)) {
    output.print("Its weights are not here. Run \"quillback setup --model " + name + "\".");
  }
  const auto noted = noteChosen(context.home, name, writtenBy(context), lockIfFree);
  return noted || noted.error().exit == SetupExit::locked ? SetupResult() : noted;
}

/// The files that setup makes in the model's folder, apart from the manifest and the lock.
std::vector<std::string> filesOf(const ModelContext& context, const std::string& name) {
  std::vector<std::string> files{"ggml-" + name + ".bin", voiceDetectionPin().name};
  if (const ModelPin* const pin = pinNamed(context.pins, name)) files.push_back(pin->weights.name);
  if (const auto manifest = readManifest(context.home, name)) {
    for (const Manifest::File& file : manifest->files) files.push_back(file.name);
  }
  std::vector<std::string> all{"manifest.json.tmp"};
  for (const std::string& file : files) {
    for (const char* const end :
         {"", ".tmp", ".part", ".part.json", ".part.json.tmp", ".part.blocks"}) {
      all.push_back(file + end);
    }
  }
  return all;
}

/// Removes one file and returns its bytes.
tl::expected<std::uint64_t, std::error_code> removeCounted(const std::string& path) {
  struct stat found {};
  if (::lstat(path.c_str(), &found) != 0) return 0;
  return removeFile(path).map(
      [&found] { return S_ISREG(found.st_mode) ? static_cast<std::uint64_t>(found.st_size) : 0; });
}

/// The manifest goes first: while it exists, the weights count as present.
SetupResult removeAll(const ModelFolder& folder, const std::vector<std::string>& files,
                      std::uint64_t& bytes) {
  if (auto removed = folder.removeManifest(); !removed) return removed;
  for (const std::string& file : files) {
    const auto removed = removeCounted(folder.pathOf(file));
    if (!removed) return folder.check(tl::unexpected(removed.error()));
    bytes += *removed;
  }
  return folder.check(syncFolder(folder.path()));
}

SetupResult removeKnown(const ModelContext& context, const std::string& name, Output& output) {
  ModelFolder folder(context.home, name);
  if (auto locked = folder.tryLock(); !locked) return locked;
  std::uint64_t bytes = 0;
  auto removed = removeAll(folder, filesOf(context, name), bytes);
  if (!removed) return removed;
  output.print(bytes == 0 ? "There is nothing of " + name + " to remove."
                          : "Removed " + name + ": " + std::to_string(bytes) + " bytes (" +
                                formatMegabytes(bytes) + ").");
  return {};
}

SetupResult removeUnused(const ModelContext& context, const std::string& name, Output& output) {
  if (name == context.names.inUse()) {
    return refused(SetupExit::usage, name +
                                         " is in use. Choose another model first, with "
                                         "\"quillback use NAME\".");
  }
  std::error_code error;
  const bool hasFolder =
      isModelName(name) && fs::is_directory(ConfigManager(context.home).weightsFolder(name), error);
  if (!hasFolder) {
    if (pinNamed(context.pins, name) == nullptr) return unknownModel(context, name);
    output.print("There is nothing of " + name + " to remove.");
    return {};
  }
  if (auto removed = removeKnown(context, name, output); !removed) return removed;
  // The application's window must not take the chosen model for missing now.
  return noteChosen(context.home, context.names.engine, writtenBy(context), lockIfFree);
}

}  // namespace

int useModel(const ModelContext& context, const std::string& name, Output& output) {
  return exitStatus(choose(context, name, output), output);
}

int removeModel(const ModelContext& context, const std::string& name, Output& output) {
  return exitStatus(removeUnused(context, name, output), output);
}

std::string adviseModel(const ModelContext& context, Output& output) {
  const std::optional<double> timeFactor =
      context.measureSpeed ? context.measureSpeed() : std::nullopt;
  const ModelPin* const pin = advise(context.pins, timeFactor.value_or(1.0), context.spoken);
  std::string name = pin != nullptr ? pin->model : context.names.inUse();
  output.print("The advised model is " + name +
               (timeFactor ? "." : "; the speed of this machine was not measured."));
  return name;
}

}  // namespace voxtrel::quillback
