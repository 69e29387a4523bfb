#include "quillback/model/Setup.h"

#include <fcntl.h>
#include <sys/file.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <optional>
#include <utility>

#include "common/posix/FileDescriptor.h"
#include "common/posix/StopSignals.h"
#include "common/settings/ConfigManager.h"
#include "quillback/model/Download.h"
#include "quillback/model/Files.h"
#include "quillback/model/Manifest.h"
#include "quillback/model/ModelStore.h"
#include "quillback/model/SetupFailure.h"

namespace voxtrel::quillback {

namespace {

using Fault = StoreFault::Kind;

constexpr const char* kManifestName = "manifest.json";
constexpr std::chrono::milliseconds kLockInterval(50);

/// One run of setup for a known model.
/// Thread: the main one.  Owns: the store's lock.  Borrows: options, pin, output.
class Setup {
 public:
  Setup(const SetupOptions& options, const ModelPin& pin, Output& output)
      : options_(options),
        pin_(pin),
        output_(output),
        folder_(ConfigManager(options.home).weightsFolder(pin.model)),
        filePath_(folder_ + "/" + pin.fileName) {}

  SetupResult run();

 private:
  SetupResult lockStore();
  std::optional<Fault> findFault() const;
  bool isReady(std::optional<Fault> fault) const;
  SetupResult makeEmbedded();
  SetupResult makeReady(Fault fault);
  SetupResult removeManifest();
  SetupResult keepOrRemoveFile();
  SetupResult download();
  SetupResult removeParts();
  SetupResult writeManifest(std::string_view recogniser, std::vector<Manifest::File> files);
  Manifest::File pinnedFile() const { return {pin_.fileName, pin_.sizeBytes, pin_.sha256}; }
  SetupResult check(FileResult result) const;

  const SetupOptions& options_;
  const ModelPin& pin_;
  Output& output_;
  std::string folder_;
  std::string filePath_;
  // Writing to a closed pipe or past a file size limit must fail, not end the process.
  StopSignals stop_{StopSignals::InheritedIgnores::keep, {SIGPIPE, SIGXFSZ}};
  FileDescriptor lock_;
};

SetupResult Setup::check(FileResult result) const {
  return result.map_error([this](std::error_code error) { return fileFailure(error, folder_); });
}

SetupResult Setup::run() {
  if (isReady(findFault())) return {};
  if (auto made = makeFolders(folder_); !made) return check(made);
  if (auto locked = lockStore(); !locked) return locked;
  options_.onStep("locked");
  // The setup that had the lock may have finished the job.
  const std::optional<Fault> fault = findFault();
  if (isReady(fault)) return {};
  return options_.hasWhisper ? makeReady(*fault) : makeEmbedded();
}

/// Waits until no other setup has the lock, and says so once. The kernel releases the lock when the
/// process ends; the file stays.
SetupResult Setup::lockStore() {
  lock_ = FileDescriptor(::open((folder_ + "/setup.lock").c_str(),
                                O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, kFileMode));
  if (!lock_.isOpen()) return check(systemFailure());
  for (bool isFirst = true; ::flock(lock_.get(), LOCK_EX | LOCK_NB) != 0; isFirst = false) {
    if (errno != EWOULDBLOCK && errno != EINTR) {
      return tl::unexpected(
          SetupFailure{SetupExit::locked, "Setup failed: " + folder_ + " cannot be locked (" +
                                              systemFailure().value().message() +
                                              "). Check the file system it is on."});
    }
    if (isFirst) output_.print("Another setup is running; waiting for it.");
    if (stop_.waitFor(kLockInterval)) return tl::unexpected(interruption());
  }
  return {};
}

/// Complete weights of another version than the pinned one count as damaged.
std::optional<Fault> Setup::findFault() const {
  const auto stored = inspectStore(options_.home, pin_.model);
  if (!stored) return stored.error().kind;
  const bool isPinned = std::ranges::count(stored->manifest.files, pinnedFile()) > 0;
  return isPinned ? std::nullopt : std::optional(Fault::damaged);
}

/// Whether there is nothing to do; then says so.
bool Setup::isReady(std::optional<Fault> fault) const {
  if (!options_.hasWhisper || fault) return false;
  output_.print("The weights of " + pin_.model + " are complete already; nothing to do.");
  return true;
}

SetupResult Setup::makeEmbedded() {
  // Weights that another build can use are kept.
  const auto stored = inspectStore(options_.home, pin_.model);
  if (!stored && stored.error().kind != Fault::embedded) {
    if (auto written = writeManifest(kPocketSphinx, {}); !written) return written;
  }
  output_.print(
      "This build has no Whisper, so nothing is downloaded; its embedded recogniser, "
      "PocketSphinx for English, is ready.");
  return {};
}

SetupResult Setup::makeReady(Fault fault) {
  if (fault == Fault::damaged) {
    output_.print("The store is damaged or of another version; repairing it.");
    if (auto removed = removeManifest(); !removed) return removed;
  }
  return keepOrRemoveFile()
      .and_then([this] { return fileSize(filePath_) ? SetupResult() : download(); })
      .and_then([this] { return removeParts(); })
      .and_then([this] { return writeManifest(kWhisper, {pinnedFile()}); })
      .map([this] { output_.print("The weights of " + pin_.model + " are complete."); });
}

/// While the manifest exists, the weights count as present.
SetupResult Setup::removeManifest() {
  return check(
      removeFile(folder_ + "/" + kManifestName).and_then([this] { return syncFolder(folder_); }));
}

/// Keeps the expected weights, which lack only their manifest; removes others.
SetupResult Setup::keepOrRemoveFile() {
  const std::optional<std::uint64_t> sizeBytes = fileSize(filePath_);
  if (!sizeBytes) return {};
  if (*sizeBytes == pin_.sizeBytes) {
    output_.print("Checking the weights that are there.");
    const FileDescriptor file(::open(filePath_.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
    if (!file.isOpen()) return check(systemFailure());
    Sha256 hash;
    if (auto read = hashFile(file.get(), hash, stop_); !read) return check(read);
    if (hash.digest() == pin_.sha256) return {};
  }
  output_.print("The weights that are there are not the expected ones; removing them.");
  return check(removeFile(filePath_));
}

SetupResult Setup::download() {
  const HttpLibrary library;
  std::string baseUrl = options_.baseUrl.empty() ? pin_.baseUrl : options_.baseUrl;
  while (baseUrl.ends_with('/')) baseUrl.pop_back();
  Download download({pin_, folder_, baseUrl, options_.certificates, "quillback/" + options_.version,
                     options_.limits, stop_, output_, options_.onStep});
  if (auto done = download.run(); !done) return done;
  if (std::rename(download.partPath().c_str(), filePath_.c_str()) != 0) {
    return check(systemFailure());
  }
  options_.onStep("renamed");
  return {};
}

SetupResult Setup::removeParts() {
  return check(removeFile(filePath_ + ".part")
                   .and_then([this] { return removeFile(filePath_ + ".part.json"); })
                   .and_then([this] { return syncFolder(folder_); }));
}

SetupResult Setup::writeManifest(std::string_view recogniser, std::vector<Manifest::File> files) {
  const Manifest manifest{pin_.model, std::string(recogniser), std::move(files),
                          "quillback " + options_.version};
  return check(replaceFile(folder_, kManifestName, formatManifest(manifest))).map([this] {
    options_.onStep("manifest");
  });
}

SetupFailure unknownModel(const SetupOptions& options) {
  std::string line = "Setup failed: unknown model \"" + options.model + "\". Known models:";
  for (const ModelPin& pin : options.pins) line += " " + pin.model;
  return {SetupExit::usage, line + "."};
}

SetupResult attemptSetup(const SetupOptions& options, Output& output) {
  const auto pin = std::ranges::find(options.pins, options.model, &ModelPin::model);
  if (pin == options.pins.end()) return tl::unexpected(unknownModel(options));
  if (!options.baseUrl.empty() && !isBaseUrl(options.baseUrl)) {
    return tl::unexpected(SetupFailure{
        SetupExit::usage,
        "Setup failed: QUILLBACK_MODEL_URL is not an address. It must begin with \"https://\" or "
        "\"http://\" and a host."});
  }
  return Setup(options, *pin, output).run();
}

}  // namespace

int runSetup(const SetupOptions& options, Output& output) {
  const SetupResult result = attemptSetup(options, output);
  if (result) return static_cast<int>(SetupExit::done);
  output.print(result.error().line);
  return static_cast<int>(result.error().exit);
}

}  // namespace voxtrel::quillback
