#pragma once

#include <functional>
#include <string>

#include "common/posix/FileDescriptor.h"

namespace voxtrel::quillback {

/// Tells of files that appear in a folder, vanish from it, or change whom they allow to read them.
/// Thread: the loop's.  Owns: a descriptor.
class FolderWatch {
 public:
  struct Listener {
    std::function<void(const std::string& name)> onAppeared;  ///< also when its rights change
    std::function<void(const std::string& name)> onVanished;
    std::function<void()> onMissed;  ///< too much happened at once: look at the whole folder
  };

  explicit FolderWatch(const std::string& folder);

  bool isOpen() const { return isWatching_; }
  int descriptor() const { return descriptor_.get(); }
  /// Tells what has happened since the last time, without waiting.
  void read(const Listener& listener) const;

 private:
  FileDescriptor descriptor_;
  bool isWatching_;
};

}  // namespace voxtrel::quillback
