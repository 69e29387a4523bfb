#include "quillback/model/ModelFolder.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <chrono>

#include "common/settings/ConfigManager.h"

namespace voxtrel::quillback {

namespace {

constexpr const char* kManifestName = "manifest.json";
constexpr std::chrono::milliseconds kLockInterval(50);

}  // namespace

ModelFolder::ModelFolder(const std::string& home, const std::string& model)
    : path_(ConfigManager(home).weightsFolder(model)), model_(model) {}

SetupResult ModelFolder::check(FileResult result) const {
  return result.map_error([this](std::error_code error) { return fileFailure(error, path_); });
}

SetupResult ModelFolder::openLock() {
  if (auto made = makeFolders(path_); !made) return check(made);
  lock_ = FileDescriptor(
      ::open(pathOf("setup.lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, kFileMode));
  return lock_.isOpen() ? SetupResult() : check(systemFailure());
}

SetupResult ModelFolder::lock(const StopSignals& stop, Output& output) {
  if (auto opened = openLock(); !opened) return opened;
  for (bool isFirst = true; ::flock(lock_.get(), LOCK_EX | LOCK_NB) != 0; isFirst = false) {
    if (errno != EWOULDBLOCK && errno != EINTR) {
      return tl::unexpected(lockFailure(systemFailure().value().message()));
    }
    if (isFirst) output.print("Another setup is running; waiting for it.");
    if (stop.waitFor(kLockInterval)) return tl::unexpected(interruption());
  }
  return {};
}

SetupResult ModelFolder::tryLock() {
  if (auto opened = openLock(); !opened) return opened;
  if (::flock(lock_.get(), LOCK_EX | LOCK_NB) == 0) return {};
  if (errno != EWOULDBLOCK) return tl::unexpected(lockFailure(systemFailure().value().message()));
  return tl::unexpected(
      SetupFailure{SetupExit::locked, "Setup of " + model_ + " is running. Wait for its end."});
}

SetupFailure ModelFolder::lockFailure(const std::string& why) const {
  return {SetupExit::locked, "Setup failed: " + path_ + " cannot be locked (" + why +
                                 "). Check the file system it is on."};
}

SetupResult ModelFolder::writeManifest(const Manifest& manifest) const {
  return check(replaceFile(path_, kManifestName, formatManifest(manifest)));
}

SetupResult ModelFolder::removeManifest() const {
  return check(removeFile(pathOf(kManifestName)).and_then([this] { return syncFolder(path_); }));
}

}  // namespace voxtrel::quillback
