#include "quillback/insertion/clipboard/DesktopPrograms.h"

#include <utility>

namespace voxtrel::quillback {

void DesktopPrograms::copy(const std::string& text) {
  copy(text, [this](bool isThere) {
    if (!isThere) reportCopyFailure();
  });
}

void DesktopPrograms::copy(const std::string& text, const OnCopied& onCopied) {
  const int id = nextRun_++;
  auto child = ChildRun::start({"wl-copy", "--type", "text/plain;charset=utf-8"}, text, loop_,
                               [=, this](int exitStatus) {
                                 const auto ended = runs_.extract(id);
                                 onCopied(exitStatus == 0);
                               });
  if (!child) return onCopied(false);
  runs_.emplace(id, std::move(child));
}

void DesktopPrograms::reportCopyFailure() {
  output_.print(
      "[quillback] ERROR The text could not be copied: wl-copy (package wl-clipboard) is missing "
      "or the desktop refused it");
}

}  // namespace voxtrel::quillback
