#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "quillback/dbus/LoopBus.h"

namespace voxtrel::quillback {

/// Which program and which of its windows has the focus, on Plasma: its compositor runs a script of ours, which
/// tells. Other desktops do not tell.
/// Thread: the loop's.  Owns: a connection to the session bus, the script's file.
/// Borrows: Loop (must outlive this).
/// Fails by: an empty answer.
class FocusedApp {
 public:
  /// Gets the compositor's name for the window.
  using OnAnswer = std::function<void(std::string window)>;

  explicit FocusedApp(Loop& loop) : loop_(loop) {}
  FocusedApp(const FocusedApp&) = delete;
  FocusedApp& operator=(const FocusedApp&) = delete;
  ~FocusedApp();

  /// Asks again. What was answered before is forgotten; of an earlier question nothing is heard any more. The
  /// answer comes soon, or at once where the desktop does not tell.
  void ask(OnAnswer onAnswer);
  /// Of the last answer; false without one.
  bool isTerminal() const;

 private:
  void open();
  void load();
  void run(const std::string& script, bool isLastTry);
  void fail();
  void end(const std::string& window);

  Loop& loop_;
  OnAnswer onAnswer_;  // null once it was answered
  std::string app_;
  bool isWritten_ = false;  // the script's file, for this connection
  std::unique_ptr<Loop::Timer> limit_;
  std::unique_ptr<Bus> bus_;
};

/// Whether the program, as a desktop names it, pastes with Ctrl+Shift+V.
bool isTerminalApp(std::string_view app);

}  // namespace voxtrel::quillback
