#pragma once

#include <string>

#include "common/posix/FileDescriptor.h"
#include "common/posix/StopSignals.h"
#include "quillback/model/Files.h"
#include "quillback/model/Manifest.h"
#include "quillback/model/SetupFailure.h"
#include "quillback/ports/Output.h"

namespace voxtrel::quillback {

/// The folder of one model in the store: its lock, and what is written while that is held. The kernel
/// releases the lock when the process ends; the lock's file stays.
/// Thread: one.  Owns: the lock.
/// Fails by: a SetupFailure that names the folder.
class ModelFolder {
 public:
  ModelFolder(const std::string& home, const std::string& model);

  const std::string& path() const { return path_; }
  std::string pathOf(const std::string& fileName) const { return path_ + "/" + fileName; }

  /// Creates the folder and waits until no other process has the lock; says so once.
  SetupResult lock(const StopSignals& stop, Output& output);
  /// The same, but fails at once where another process has the lock.
  SetupResult tryLock();

  /// Writes `manifest` atomically, in place of an earlier one.
  SetupResult writeManifest(const Manifest& manifest) const;
  /// While the manifest exists, the weights count as present.
  SetupResult removeManifest() const;

  /// The same result with a system error put into words.
  SetupResult check(FileResult result) const;

 private:
  SetupResult openLock();
  SetupFailure lockFailure(const std::string& why) const;

  const std::string path_;
  const std::string model_;
  FileDescriptor lock_;
};

}  // namespace voxtrel::quillback
