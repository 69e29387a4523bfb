#pragma once

#include <unistd.h>

#include <utility>

namespace voxtrel {

/// A file descriptor that is closed with its owner.
/// Thread: one at a time.  Owns: the descriptor.
class FileDescriptor {
 public:
  FileDescriptor() = default;
  /// Negative, as system calls return on failure: nothing is open.
  explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
  FileDescriptor(FileDescriptor&& other) noexcept
      : descriptor_(std::exchange(other.descriptor_, -1)) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
  }
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;
  ~FileDescriptor() { reset(); }

  bool isOpen() const { return descriptor_ >= 0; }
  int get() const { return descriptor_; }

  /// Closes it now; does nothing when repeated.
  void reset() {
    if (const int descriptor = std::exchange(descriptor_, -1); descriptor >= 0) ::close(descriptor);
  }

 private:
  int descriptor_ = -1;
};

}  // namespace voxtrel
