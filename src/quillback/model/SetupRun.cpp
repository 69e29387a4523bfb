#include "quillback/model/SetupRun.h"

#include <fcntl.h>

#include <cstdio>
#include <filesystem>
#include <utility>

#include "common/posix/FileDescriptor.h"
#include "quillback/model/Download.h"
#include "quillback/model/Files.h"
#include "quillback/model/ModelStore.h"

namespace voxtrel::quillback {

namespace {

Manifest::File entryOf(const FilePin& pin) {
  return {pin.name, pin.sizeBytes, pin.sha256};
}

tl::unexpected<SetupFailure> setupFailure(SetupExit exit, const std::string& what) {
  return tl::unexpected(SetupFailure{exit, std::string(kSetupFailed) + what});
}

}  // namespace

SetupRun::SetupRun(const SetupOptions& options, SetupJob job, const StopSignals& stop,
                   Output& output)
    : options_(options),
      job_(std::move(job)),
      stop_(stop),
      output_(output),
      folder_(options.home, job_.pin.model),
      maxTries_(options.limits.maxTries) {}

SetupResult SetupRun::download() {
  if (isReady(findState())) return {};
  if (auto locked = folder_.lock(stop_, output_); !locked) return locked;
  options_.onStep("locked");
  // The setup that had the lock may have finished the job.
  const State state = findState();
  if (isReady(state)) return {};
  if (!options_.hasWhisper) return makeEmbedded();
  // The weights stay as they are and count as present all the time.
  if (state == State::withoutVoiceDetection) {
    return needVoiceDetection(false).and_then([this] { return finish(true); });
  }
  if (!job_.isCustom) return makeReady(state);
  const std::string& name = job_.pin.model;
  return setupFailure(SetupExit::usage, "the weights of " + name +
                                            " are damaged. Bring them again with \"quillback setup "
                                            "--model " +
                                            name + " --file PATH\".");
}

/// Complete weights of another version than the pinned one count as damaged.
SetupRun::State SetupRun::findState() const {
  const auto stored = inspectStore(options_.home, job_.pin.model);
  if (!stored) {
    const StoreFault::Kind kind = stored.error().kind;
    if (kind == StoreFault::Kind::absent) return State::absent;
    return kind == StoreFault::Kind::embedded ? State::embedded : State::damaged;
  }
  const std::vector<Manifest::File>& files = stored->manifest.files;
  if (files.front() != entryOf(job_.pin.weights)) return State::damaged;
  const bool hasVoiceDetection =
      !stored->voiceDetectionFile.empty() && files[1] == entryOf(options_.voiceDetection);
  return hasVoiceDetection ? State::ready : State::withoutVoiceDetection;
}

/// Whether there is nothing to do; then says so.
bool SetupRun::isReady(State state) const {
  if (!options_.hasWhisper || state != State::ready) return false;
  output_.print("The weights of " + job_.pin.model + " are complete already; nothing to do.");
  return true;
}

SetupResult SetupRun::makeEmbedded() {
  // Weights that another build can use are kept.
  const auto stored = inspectStore(options_.home, job_.pin.model);
  if (!stored && stored.error().kind != StoreFault::Kind::embedded) {
    if (auto written = writeManifest(kPocketSphinx, {}); !written) return written;
  }
  output_.print(
      "This build has no Whisper, so nothing is downloaded; its embedded recogniser, "
      "PocketSphinx for English, is ready.");
  return {};
}

SetupResult SetupRun::makeReady(State state) {
  if (!job_.pin.licence.empty()) output_.print(job_.pin.model + ": " + job_.pin.licence + ".");
  if (state == State::damaged) {
    output_.print("The store is damaged or of another version; repairing it.");
    if (auto removed = folder_.removeManifest(); !removed) return removed;
  }
  return needVoiceDetection(true).and_then([this] { return needWeights(); }).and_then([this] {
    return finish(true);
  });
}

/// Keeps the expected weights, which lack only their manifest; replaces others.
SetupResult SetupRun::needWeights() {
  const FilePin& pin = job_.pin.weights;
  if (const auto sizeBytes = fileSize(folder_.pathOf(pin.name))) {
    if (*sizeBytes == pin.sizeBytes) output_.print("Checking the weights that are there.");
    const auto there = isThere(pin);
    if (!there) return tl::unexpected(there.error());
    if (*there) return {};
    output_.print("The weights that are there are not the expected ones; removing them.");
    if (auto removed = removeFile(folder_.pathOf(pin.name)); !removed) {
      return folder_.check(removed);
    }
  }
  return fetch(pin, false, "");
}

SetupResult SetupRun::needVoiceDetection(bool isQuiet) {
  const FilePin& pin = options_.voiceDetection;
  const auto there = isThere(pin);
  if (!there) return tl::unexpected(there.error());
  if (*there) return {};
  if (auto removed = removeFile(folder_.pathOf(pin.name)); !removed) return folder_.check(removed);
  return fetch(pin, isQuiet, "voice ");
}

/// Whether the file is in the folder, with the expected content. A link, a read-only file or one of another
/// owner will do.
tl::expected<bool, SetupFailure> SetupRun::isThere(const FilePin& pin) const {
  const std::string path = folder_.pathOf(pin.name);
  if (fileSize(path) != pin.sizeBytes) return false;
  const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  Sha256 hash;
  const FileResult read =
      file.isOpen() ? hashFile(file.get(), hash, stop_) : FileResult(systemFailure());
  if (read) return hash.digest() == pin.sha256;
  if (read.error().value() == ECANCELED) return tl::unexpected(interruption());
  return setupFailure(SetupExit::unwritable, path + " cannot be read (" + read.error().message() +
                                                 "). Check its permissions and run setup again.");
}

SetupResult SetupRun::fetch(const FilePin& pin, bool isQuiet, const std::string& stepPrefix) {
  const HttpLibrary library;
  std::string baseUrl = options_.baseUrl.empty() ? std::string(kModelServer) : options_.baseUrl;
  while (baseUrl.ends_with('/')) baseUrl.pop_back();
  TransferLimits limits = options_.limits;
  limits.maxTries = maxTries_;
  const auto onStep = [this, &stepPrefix](std::string_view step) {
    options_.onStep(std::string(stepPrefix).append(step));
  };
  Download download({pin, folder_.path(), baseUrl, options_.certificates,
                     "quillback/" + options_.version, limits, stop_, output_, onStep, isQuiet});
  if (auto done = download.run(); !done) return done;
  if (std::rename(download.partPath().c_str(), folder_.pathOf(pin.name).c_str()) != 0) {
    return folder_.check(systemFailure());
  }
  onStep("renamed");
  return {};
}

/// Removes the parts of the files that the manifest names, and writes it.
SetupResult SetupRun::finish(bool hasVoiceDetection) {
  std::vector<Manifest::File> files{entryOf(job_.pin.weights)};
  if (hasVoiceDetection) files.push_back(entryOf(options_.voiceDetection));
  for (const Manifest::File& file : files) {
    const std::string part = folder_.pathOf(file.name + ".part");
    for (const char* const end : {"", ".json", ".blocks"}) {
      if (auto removed = removeFile(part + end); !removed) return folder_.check(removed);
    }
  }
  return folder_.check(syncFolder(folder_.path()))
      .and_then([&] { return writeManifest(recogniserOf(job_.pin.family), std::move(files)); })
      .map([this] { output_.print("The weights of " + job_.pin.model + " are complete."); });
}

SetupResult SetupRun::writeManifest(std::string_view recogniser,
                                    std::vector<Manifest::File> files) {
  const Manifest manifest{job_.pin.model,
                          std::string(recogniser),
                          std::move(files),
                          "quillback " + options_.version,
                          "",
                          job_.isCustom};
  return folder_.writeManifest(manifest).map([this] { options_.onStep("manifest"); });
}

SetupResult SetupRun::copyFile() {
  if (auto locked = folder_.lock(stop_, output_); !locked) return locked;
  options_.onStep("locked");
  const auto own = copyWeights(options_.file, folder_, job_.pin.weights.name, stop_, output_);
  if (!own) return tl::unexpected(own.error());
  options_.onStep("copied");
  if (auto judged = judge(*own); !judged) {
    return folder_.check(removeFile(own->partFile)).and_then([&judged] { return judged; });
  }
  return install(*own);
}

/// Compares the copy with the pin; tries to load one that has none.
SetupResult SetupRun::judge(const OwnWeights& own) {
  FilePin& pin = job_.pin.weights;
  if (!job_.isCustom) {
    if (own.sizeBytes == pin.sizeBytes && own.sha256 == pin.sha256) return {};
    return setupFailure(SetupExit::wrongFile,
                        options_.file + " is not the file of " + job_.pin.model +
                            " (its size or its SHA-256 is another). Choose another name for it.");
  }
  job_.pin.family = own.family;
  pin.sizeBytes = own.sizeBytes;
  pin.sha256 = own.sha256;
  if (!options_.tryWeights) return {};
  const auto tried = options_.tryWeights(own.partFile, own.family);
  if (tried) return {};
  return setupFailure(SetupExit::wrongFile,
                      options_.file + " cannot be loaded (" + tried.error() + ").");
}

/// Puts a good copy into the place of earlier weights.
SetupResult SetupRun::install(const OwnWeights& own) {
  if (auto removed = folder_.removeManifest(); !removed) return removed;
  if (std::rename(own.partFile.c_str(), folder_.pathOf(job_.pin.weights.name).c_str()) != 0) {
    return folder_.check(systemFailure());
  }
  options_.onStep("renamed");
  if (copyVoiceDetection()) return finish(true);
  // Who brings weights may have no network, and should not wait for it.
  maxTries_ = 1;
  auto fetched = tryVoiceDetection();
  if (!fetched && fetched.error().exit == SetupExit::interrupted) return fetched;
  return finish(fetched.has_value());
}

/// Copies the voice detection if it lies beside the user's weights.
bool SetupRun::copyVoiceDetection() {
  const FilePin& pin = options_.voiceDetection;
  const std::string path = std::filesystem::path(options_.file).replace_filename(pin.name);
  const auto bytes = readSmallFile(path, pin.sizeBytes + 1);
  if (!bytes || bytes->size() != pin.sizeBytes) return false;
  Sha256 hash;
  hash.add(*bytes);
  return hash.digest() == pin.sha256 && replaceFile(folder_.path(), pin.name, *bytes).has_value();
}

/// Says why it fails.
SetupResult SetupRun::tryVoiceDetection() {
  auto fetched = needVoiceDetection(false);
  if (fetched || fetched.error().exit == SetupExit::interrupted) return fetched;
  std::string why = fetched.error().line;
  if (why.starts_with(kSetupFailed)) why.erase(0, kSetupFailed.size());
  output_.print("The voice detection was not added: " + why);
  return fetched;
}

}  // namespace voxtrel::quillback
