#pragma once

#include <deque>

#include "quillback/insertion/x11/FocusedWindow.h"
#include "quillback/insertion/x11/SpareKeys.h"
#include "quillback/insertion/x11/TypingKeys.h"
#include "quillback/insertion/x11/TypingPlan.h"
#include "quillback/insertion/x11/WindowPing.h"
#include "quillback/keys/OwnKeys.h"
#include "quillback/ports/Loop.h"

namespace voxtrel::quillback {

/// Types texts into whichever window has the focus, one after the other, with a blank between two
/// that go to the same window. A character that the layout lacks is put on a spare key for a moment,
/// until the program has read it. Never waits for programs. Destroying it restores everything at once
/// and leaves out the rest of the text.
/// Thread: the loop's.  Owns: a connection to the server.  Borrows: Loop, OwnKeys (must outlive this).
/// Fails by: `onRefused` with the text and the reason.
class XTestTyper {
 public:
  using OnRefused = std::function<void(const std::string& text, const std::string& why)>;
  struct Opened {
    std::unique_ptr<XTestTyper> typer;  ///< nothing where the server does not do
    std::string why;                    ///< then the reason, for people
  };

  [[nodiscard]] static Opened open(Loop& loop, OwnKeys& ownKeys, OnRefused onRefused);

  void type(const std::string& text);
  bool isIdle() const { return !timer_ && texts_.empty(); }

 private:
  XTestTyper(std::unique_ptr<XConnection> server, Loop& loop, OwnKeys& ownKeys,
             OnRefused onRefused);

  static std::string missing(const XConnection& server);
  void typeNextText();
  /// Returns why the text cannot be typed, "" if it can and its batches are ready.
  std::string prepare(const std::string& text);
  void remember(const FocusedWindow& window);
  void beginBatch();
  void typePiece();
  void endBatch();
  /// Goes on with `step` once the program has read its keys.
  void atSign(void (XTestTyper::*step)(), std::chrono::milliseconds withoutSigns);
  void stopAwaitingSign();
  void restoreAtSign();
  void restore();
  void drainEvents();
  void later(std::chrono::milliseconds delay, void (XTestTyper::*step)());

  std::unique_ptr<XConnection> server_;
  Loop& loop_;
  OnRefused onRefused_;
  xcb_atom_t activeWindowAtom_;
  WindowPing ping_;
  bool awaitsSign_ = false;
  void (XTestTyper::*atSign_)() = nullptr;
  TypingKeys keys_;
  SpareKeys spares_;
  std::deque<std::string> texts_;
  KeyTable table_;
  std::deque<TypingBatch> batches_;
  std::size_t typedStrokes_ = 0;  // of the first batch
  FocusedWindow lastWindow_;
  std::unique_ptr<Loop::Timer> timer_;
  std::unique_ptr<Loop::Watch> watch_;
};

}  // namespace voxtrel::quillback
