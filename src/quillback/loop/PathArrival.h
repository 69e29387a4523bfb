#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "quillback/loop/FolderWatch.h"
#include "quillback/ports/Loop.h"

namespace voxtrel::quillback {

/// Reports whenever a file or folder appears at a path, or changes its permissions. Folders above it may be
/// missing as well.
/// Thread: the loop's.  Owns: a watch of the deepest folder that exists.  Borrows: Loop (must outlive this).
/// Fails by: reporting nothing.
class PathArrival {
 public:
  /// `onArrival` may destroy this.
  PathArrival(std::filesystem::path path, Loop& loop, std::function<void()> onArrival);
  PathArrival(const PathArrival&) = delete;
  PathArrival& operator=(const PathArrival&) = delete;

 private:
  void watchDeepestFolder();
  void handle();

  const std::filesystem::path path_;
  Loop& loop_;
  const std::function<void()> onArrival_;
  std::string awaited_;  ///< the next part of the path
  std::optional<FolderWatch> folder_;
  std::unique_ptr<Loop::Watch> watch_;  // ends before the folder's
};

}  // namespace voxtrel::quillback
