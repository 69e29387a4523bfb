#pragma once

#include <unistd.h>

#include <utility>

namespace voxtrel {

/// Closes a descriptor when it is no longer needed.
/// Thread: one at a time.  Owns: the descriptor.
class FileDescriptor {
 public:
  FileDescriptor() = default;
  explicit FileDescriptor(int number) : number_(number) {}
  FileDescriptor(FileDescriptor&& other) noexcept : number_(std::exchange(other.number_, kNone)) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;
  ~FileDescriptor() { reset(); }

  int number() const { return number_; }

  /// Closes it now; harmless when repeated.
  void reset() {
    if (const int number = std::exchange(number_, kNone); number != kNone) ::close(number);
  }

 private:
  static constexpr int kNone = -1;
  int number_ = kNone;
};

}  // namespace voxtrel
