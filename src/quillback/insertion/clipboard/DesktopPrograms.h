#pragma once

#include <map>
#include <string>
#include <vector>

#include "quillback/insertion/clipboard/ChildRun.h"
#include "quillback/ports/Output.h"

namespace voxtrel::quillback {

/// Copies text under Wayland and shows notifications by running the desktop's own small programs.
/// Thread: the loop's.  Owns: the running programs.  Borrows: Loop, Output (must outlive this).
/// Fails by: a line of output.
class DesktopPrograms {
 public:
  DesktopPrograms(Loop& loop, Output& output) : loop_(loop), output_(output) {}

  /// Copies with wl-copy, of Debian's package wl-clipboard.
  void copy(const std::string& text);
  /// Shows a notification with notify-send, of Debian's package libnotify-bin. The body is shown as it
  /// is, a long one in part. Only the first failure is printed.
  void notify(const std::string& title, const std::string& body);

 private:
  using OnFailure = void (DesktopPrograms::*)();

  void run(const std::vector<std::string>& words, const std::string& input, OnFailure onFailure);
  void reportCopyFailure();
  void reportNotificationFailure();

  Loop& loop_;
  Output& output_;
  std::map<int, std::unique_ptr<ChildRun>> runs_;
  int nextRun_ = 0;
  bool hasReportedNotification_ = false;
};

}  // namespace voxtrel::quillback
