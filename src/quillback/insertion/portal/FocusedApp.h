#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "quillback/dbus/LoopBus.h"

namespace voxtrel::quillback {

/// Which program has the focus, on Plasma: its compositor runs a script of ours, which tells. Other desktops
/// do not tell.
/// Thread: the loop's.  Owns: a connection to the session bus, the script's file.
/// Borrows: Loop (must outlive this).
/// Fails by: no answer.
class FocusedApp {
 public:
  explicit FocusedApp(Loop& loop) : loop_(loop) {}
  FocusedApp(const FocusedApp&) = delete;
  FocusedApp& operator=(const FocusedApp&) = delete;
  ~FocusedApp();

  /// Asks again. What was answered before is forgotten.
  void ask();
  /// Whether the answer may still come.
  bool isAsking() const { return limit_ != nullptr; }
  /// False without an answer.
  bool isTerminal() const;

 private:
  void open();
  void load();
  void run(const std::string& script, bool isLastTry);
  void fail();
  void end() { limit_.reset(); }

  Loop& loop_;
  std::string app_;
  bool isWritten_ = false;  // the script's file, for this connection
  std::unique_ptr<Loop::Timer> limit_;
  std::unique_ptr<Bus> bus_;
};

/// Whether the program, as a desktop names it, pastes with Ctrl+Shift+V.
bool isTerminalApp(std::string_view app);

}  // namespace voxtrel::quillback
