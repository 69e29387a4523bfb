#pragma once

#include <map>
#include <string>
#include <vector>

#include "quillback/insertion/helpers/ChildRun.h"
#include "quillback/ports/Output.h"

namespace voxtrel::quillback {

/// The desktop's own small programs, which we run for what needs a whole protocol otherwise.
/// Thread: the loop's.  Owns: the programs' handles.  Borrows: Loop, Output (must outlive this).
/// Fails by: a line of output.
class Helpers {
 public:
  Helpers(Loop& loop, Output& output) : loop_(loop), output_(output) {}

  /// Copies `text` by wl-copy, of Debian's package wl-clipboard.
  void copy(const std::string& text);
  /// Shows a notification by notify-send, of Debian's package libnotify-bin. Where it cannot, that is
  /// said once.
  void notify(const std::string& title, const std::string& body);

 private:
  using OnFailure = void (Helpers::*)();

  void run(const std::vector<std::string>& words, const std::string& input, OnFailure onFailure);
  void sayNoCopy();
  void sayNoNotification();

  Loop& loop_;
  Output& output_;
  std::map<int, std::unique_ptr<ChildRun>> runs_;
  int nextRun_ = 0;
  bool saidNoNotification_ = false;
};

}  // namespace voxtrel::quillback
