#pragma once

#include <deque>

#include <tl/expected.hpp>

#include "quillback/insertion/x11/FocusedWindow.h"
#include "quillback/insertion/x11/TypingKeyboard.h"
#include "quillback/insertion/x11/TypingPlan.h"
#include "quillback/keys/OwnKeys.h"
#include "quillback/ports/Loop.h"

namespace voxtrel::quillback {

/// Types texts into the window with the focus, one after the other, with a space between two that go
/// to the same window. A newline in a text presses Return. A character missing from the layout is put on a spare key until the client has
/// read it. Nothing blocks on clients. Destroying it restores the keyboard at once and drops the rest
/// of the text.
/// Thread: the loop's.  Owns: a connection to the server.  Borrows: Loop, OwnKeys (must outlive this).
/// Fails by: an error from `open`; later `onRefused` with the text and the reason.
class XTestTyper {
 public:
  using OnRefused = std::function<void(const std::string& text, const std::string& why)>;

  /// The error is for people.
  [[nodiscard]] static tl::expected<std::unique_ptr<XTestTyper>, std::string> open(
      Loop& loop, OwnKeys& ownKeys, OnRefused onRefused);

  /// Returns at once; the text is typed in steps on the loop.
  void type(const std::string& text);
  bool isIdle() const { return !timer_ && texts_.empty(); }

 private:
  using Step = void (XTestTyper::*)();

  XTestTyper(std::unique_ptr<XConnection> server, Loop& loop, OwnKeys& ownKeys,
             OnRefused onRefused);

  void typeNextText();
  /// Makes the text's batches.
  tl::expected<void, std::string> prepare(const std::string& text);
  void remember(const FocusedWindow& window);
  void beginBatch();
  void typePiece();
  void endBatch();
  void restoreAfterPing();
  void restore();
  /// Runs `step` after the reply to the pending ping, or after `withoutPing` if none is pending.
  void afterPing(Step step, std::chrono::milliseconds withoutPing);
  void cancelPing();
  void runAfter(std::chrono::milliseconds delay, Step step);
  void drainEvents();

  std::unique_ptr<XConnection> server_;
  Loop& loop_;
  OnRefused onRefused_;
  xcb_atom_t activeWindowAtom_;
  WindowPing ping_;
  Step afterPing_ = nullptr;
  TypingKeyboard keyboard_;
  std::deque<std::string> texts_;
  KeyTable table_;
  std::deque<TypingBatch> batches_;
  std::size_t typedStrokes_ = 0;  // of the first batch
  FocusedWindow lastWindow_;
  std::string lastText_;  // typed into that window
  std::unique_ptr<Loop::Timer> timer_;
  std::unique_ptr<Loop::Watch> watch_;
};

}  // namespace voxtrel::quillback
