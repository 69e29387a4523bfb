#pragma once

#include <functional>
#include <string>

#include "common/posix/FileDescriptor.h"

namespace voxtrel::quillback {

/// Reports files that appear in a folder, disappear or change their permissions.
/// Thread: the loop's.  Owns: a descriptor.
/// Fails by: `isOpen`.
class FolderWatch {
 public:
  struct Listener {
    std::function<void(const std::string& name)> onAppeared;  ///< also when its permissions change
    std::function<void(const std::string& name)> onDisappeared;
    std::function<void()> onMissed;  ///< events were lost: read the whole folder
  };

  explicit FolderWatch(const std::string& folder);

  bool isOpen() const { return isWatching_; }
  int descriptor() const { return descriptor_.get(); }
  /// Reports what has happened since the last call, without waiting.
  void read(const Listener& listener) const;

 private:
  FileDescriptor descriptor_;
  bool isWatching_;
};

}  // namespace voxtrel::quillback
