#pragma once

#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "quillback/ports/Loop.h"
#include "quillback/ports/PasteClipboard.h"

namespace voxtrel::quillback {

/// Pastes texts, one after the other, into the window that has the focus: puts a text into the clipboard,
/// presses the paste key, and puts back what was there once a window has read the text. A text that soon
/// follows another begins with a space, unless the desktop tells that the window is another one.
/// No key is pressed while the screen is locked.
/// Thread: the loop's.  Borrows: Loop (must outlive this); a clipboard for the time of a text.
/// Fails by: `onRefused` with the text and a reason for people.
class PasteQueue {
 public:
  /// Gets the desktop's name for the window with the focus, empty if the desktop does not tell.
  using OnFocus = std::function<void(std::string window)>;
  struct Ways {
    /// Asked for again and again; null if there is none.
    std::function<PasteClipboard*()> clipboard;
    std::function<bool()> isLocked;
    /// Asked before each text; a late answer is not waited for.
    std::function<void(OnFocus onFocus)> askFocus;
    std::function<void()> pressPasteKey;
    std::function<void(const std::string& text, const std::string& why)> onRefused;
  };
  using OnEnd = std::function<void()>;

  PasteQueue(Loop& loop, Ways ways) : loop_(loop), ways_(std::move(ways)) {}
  PasteQueue(const PasteQueue&) = delete;
  PasteQueue& operator=(const PasteQueue&) = delete;

  /// Returns at once. `onEnd` is called once the text was read or refused.
  void add(const std::string& text, OnEnd onEnd);
  /// From now on texts are pasted; before, they wait.
  void open();
  /// Refuses all that was not read yet; later texts wait.
  void close(const std::string& why);

 private:
  /// Of the first text; `quiet` follows it, until the clipboard can be changed again.
  enum class Phase { idle, reading, offering, settling, pasting, quiet };
  struct Text {
    std::string text;
    OnEnd onEnd;
  };

  void begin();
  bool isClipboardThere();
  void onContent(ClipboardContent content);
  void onFocus(std::string window);
  void offerOnceReady();
  void offerText();
  [[nodiscard]] bool isContinuation() const;
  void onOffered(bool isThere);
  void onRead(const std::string& type, Loop::TimePoint begun);
  void press();
  void endText();
  void endQuiet();
  void putBack();
  void refuse(const std::string& why);
  void stop();
  /// Moves on and, after a time, runs `next` unless that was replaced by then.
  void enter(Phase phase, std::chrono::milliseconds limit, std::function<void()> next);
  /// Calls a member as long as the text is the same one and this is there.
  template <typename... Arguments>
  std::function<void(Arguments...)> whileSame(void (PasteQueue::*step)(Arguments...));

  Loop& loop_;
  Ways ways_;
  bool isOpen_ = false;
  Phase phase_ = Phase::idle;
  std::deque<Text> texts_;
  PasteClipboard* clipboard_ = nullptr;     // of the first text
  std::optional<ClipboardContent> before_;  // what to put back
  std::optional<std::string> window_;       // with the focus, once the desktop has answered
  std::string lastText_;
  std::string lastWindow_;
  Loop::TimePoint lastTime_{};
  Loop::TimePoint settled_{};   // at the latest
  bool awaitsWatcher_ = false;  // the desktop has not read the first text yet
  Loop::TimePoint pressed_{};   // the paste key for the first text
  std::unique_ptr<Loop::Timer> timer_;
  std::shared_ptr<unsigned> number_ = std::make_shared<unsigned>(0);  // of the text
};

}  // namespace voxtrel::quillback
