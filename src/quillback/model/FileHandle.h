#pragma once

#include <unistd.h>

#include <utility>

namespace voxtrel::quillback {

/// A file descriptor that is closed at the end of its scope.
/// Thread: one at a time.  Owns: the descriptor.
/// Fails by: being false where there is none.
class FileHandle {
 public:
  FileHandle() = default;
  explicit FileHandle(int descriptor) : descriptor_(descriptor) {}
  FileHandle(FileHandle&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  FileHandle& operator=(FileHandle&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
  }
  ~FileHandle() {
    if (descriptor_ >= 0) ::close(descriptor_);
  }

  explicit operator bool() const { return descriptor_ >= 0; }
  int get() const { return descriptor_; }

 private:
  int descriptor_ = -1;
};

}  // namespace voxtrel::quillback
