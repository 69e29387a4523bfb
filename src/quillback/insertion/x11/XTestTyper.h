#pragma once

#include <deque>

#include <tl/expected.hpp>

#include "quillback/insertion/x11/FocusedWindow.h"
#include "quillback/insertion/x11/TypingKeyboard.h"
#include "quillback/insertion/x11/TypingPlan.h"
#include "quillback/keys/OwnKeys.h"
#include "quillback/ports/Loop.h"
#include "quillback/ports/ScreenLock.h"

namespace voxtrel::quillback {

/// Types texts, one after the other, each into the window that has the focus when `type` is called, with
/// a space between two that go to the same window. Before each piece it checks that this window still
/// has the focus and the screen is not locked; otherwise it refuses the rest. A newline in a text presses Return. A character missing
/// from the layout is put on a spare key until the client has read it. Nothing blocks on clients.
/// Destroying it restores the keyboard at once and drops the rest of the text.
/// Thread: the loop's.  Owns: a connection to the server.  Borrows: Loop, OwnKeys, ScreenLock
/// (must outlive this).
/// Fails by: an error from `open`; later `onRefused` with what was not typed and the reason.
class XTestTyper {
 public:
  using OnRefused = std::function<void(const std::string& text, const std::string& why)>;
  using OnEnd = std::function<void()>;

  /// Characters that are sent after one look at the focus: at most so many go to another window that
  /// gets it meanwhile.
  static constexpr std::size_t kStrokesPerPiece = 24;

  /// The error is for people.
  [[nodiscard]] static tl::expected<std::unique_ptr<XTestTyper>, std::string> open(
      Loop& loop, OwnKeys& ownKeys, ScreenLock& lock, OnRefused onRefused);

  /// Types the text in steps on the loop. `onEnd` is called when all of it was sent or refused.
  void type(
      const std::string& text, OnEnd onEnd = [] {});
  bool isIdle() const { return !timer_ && texts_.empty(); }

 private:
  using Step = void (XTestTyper::*)();
  struct Text {
    std::string text;
    std::optional<FocusedWindow> window;  ///< that had the focus when it came
    OnEnd onEnd;
  };

  XTestTyper(std::unique_ptr<XConnection> server, Loop& loop, OwnKeys& ownKeys, ScreenLock& lock,
             OnRefused onRefused);

  void typeNextText();
  /// Makes the text's batches.
  tl::expected<void, std::string> prepare(const Text& next);
  /// Whether the text's window still has the focus. Otherwise runs `step` again a little later, if the
  /// server did not reply, or refuses the rest.
  bool mayType(Step step);
  void refuseRest(const std::string& why);
  void remember(const FocusedWindow& window);
  void beginBatch();
  void typePiece();
  void endBatch();
  void endText(std::chrono::milliseconds readTime);
  void restoreAfterPing();
  void restore();
  /// Runs `step` after the reply to the pending ping, or after `withoutPing` if none is pending.
  void afterPing(Step step, std::chrono::milliseconds withoutPing);
  void cancelPing();
  void runAfter(std::chrono::milliseconds delay, Step step);
  void drainEvents();

  std::unique_ptr<XConnection> server_;
  Loop& loop_;
  ScreenLock& lock_;
  OnRefused onRefused_;
  xcb_atom_t activeWindowAtom_;
  WindowPing ping_;
  Step afterPing_ = nullptr;
  TypingKeyboard keyboard_;
  std::deque<Text> texts_;
  std::string text_;                 // being typed
  OnEnd onEnd_;                      // of it
  std::size_t typedCharacters_ = 0;  // of it
  int missingReplies_ = 0;           // in a row
  KeyTable table_;
  std::deque<TypingBatch> batches_;
  std::size_t typedStrokes_ = 0;  // of the first batch
  FocusedWindow lastWindow_;
  std::string lastText_;  // typed into that window
  std::unique_ptr<Loop::Timer> timer_;
  std::unique_ptr<Loop::Watch> watch_;
};

}  // namespace voxtrel::quillback
