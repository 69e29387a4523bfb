#include "quillback/loop/PathArrival.h"

#include <utility>

namespace voxtrel::quillback {
namespace {

namespace fs = std::filesystem;

bool isThere(const fs::path& path) {
  std::error_code error;
  return fs::exists(path, error);
}

}  // namespace

PathArrival::PathArrival(fs::path path, Loop& loop, std::function<void()> onArrival)
    : path_(std::move(path)), loop_(loop), onArrival_(std::move(onArrival)) {
  watchDeepestFolder();
}

void PathArrival::watchDeepestFolder() {
  fs::path folder = path_.parent_path();
  fs::path awaited = path_;
  for (;;) {
    while (!isThere(folder) && folder.has_relative_path()) {
      awaited = folder;
      folder = folder.parent_path();
    }
    awaited_ = awaited.filename();
    watch_.reset();
    folder_.emplace(folder);
    // The next folder may have been made before the watch began.
    if (awaited == path_ || !isThere(awaited)) break;
    folder = path_.parent_path();
    awaited = path_;
  }
  if (folder_->isOpen()) watch_ = loop_.watch(folder_->descriptor(), [this] { handle(); });
}

void PathArrival::handle() {
  bool hasCome = false;
  folder_->read(
      {.onAppeared = [&](const std::string& name) { hasCome = hasCome || name == awaited_; },
       .onDisappeared = [](const std::string&) {},
       .onMissed = [&] { hasCome = true; }});
  if (!hasCome) return;
  watchDeepestFolder();
  if (!isThere(path_)) return;
  const auto onArrival = onArrival_;
  onArrival();
}

}  // namespace voxtrel::quillback
