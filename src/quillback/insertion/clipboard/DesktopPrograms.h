#pragma once

#include <functional>
#include <map>
#include <string>

#include "quillback/insertion/clipboard/ChildRun.h"
#include "quillback/ports/Output.h"

namespace voxtrel::quillback {

/// Copies text under Wayland by running the desktop's own small programs. They get it as their input: a
/// command line could be read by every user of the machine.
/// Thread: the loop's.  Owns: the running programs.  Borrows: Loop, Output (must outlive this).
/// Fails by: a line of output.
class DesktopPrograms {
 public:
  DesktopPrograms(Loop& loop, Output& output) : loop_(loop), output_(output) {}

  using OnCopied = std::function<void(bool isThere)>;

  /// Copies with wl-copy, of Debian's package wl-clipboard.
  void copy(const std::string& text);
  /// The same for a caller that is told of the end, instead of a line of output.
  void copy(const std::string& text, const OnCopied& onCopied);

 private:
  void reportCopyFailure();

  Loop& loop_;
  Output& output_;
  std::map<int, std::unique_ptr<ChildRun>> runs_;
  int nextRun_ = 0;
};

}  // namespace voxtrel::quillback
