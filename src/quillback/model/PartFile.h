#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "common/posix/FileDescriptor.h"
#include "common/posix/StopSignals.h"
#include "quillback/model/Sha256.h"

namespace voxtrel::quillback {

/// A file that is being downloaded, with the hash of what it holds.
/// Thread: one.  Owns: the open file.  Fails by: returning the system's error number instead of 0.
class PartFile {
 public:
  /// Opens the file, which is made where there is none.
  [[nodiscard]] int open(const std::string& path);
  /// Reads what the file holds, so that its hash is known; ECANCELED when stopped.
  [[nodiscard]] int hashAll(const StopSignals& stop);

  /// Adds to the end. What a full disk took of `bytes` counts.
  [[nodiscard]] int append(std::span<const char> bytes);
  [[nodiscard]] int clear();
  /// Waits until the disk has it all.
  [[nodiscard]] int sync();

  std::uint64_t sizeBytes() const { return sizeBytes_; }
  /// SHA-256 of the whole file, once hashAll has been called.
  std::string digest() const { return hash_.digest(); }

 private:
  void writeBackEarly();

  FileDescriptor file_;
  Sha256 hash_;
  std::uint64_t sizeBytes_ = 0;
  std::uint64_t writtenBackBytes_ = 0;
};

}  // namespace voxtrel::quillback
