#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <string>

#include <tl/expected.hpp>

#include "quillback/insertion/wayland/ActiveWindow.h"
#include "quillback/insertion/wayland/Compositor.h"
#include "quillback/insertion/wayland/TextKeymap.h"

struct zwp_virtual_keyboard_manager_v1;
struct zwp_virtual_keyboard_v1;

namespace voxtrel::quillback {

/// Types texts, one after the other, into the window that has the focus, on a keyboard of its own that
/// the compositor takes for a real one: whatever the layout, whatever keys are held. Between the pieces
/// of a text it looks whether the window is still the active one; otherwise it refuses the rest. A text
/// that follows another in the same window begins with a space.
/// Thread: the loop's.  Borrows: Compositor, Loop (must outlive this).
/// Fails by: an error from `open`; later `onRefused` with what was not typed and the reason.
class VirtualKeyboard {
 public:
  using OnRefused = std::function<void(const std::string& text, const std::string& why)>;
  using OnEnd = std::function<void()>;

  /// Characters that are sent after one look at the active window: at most so many go to another one.
  static constexpr std::size_t kStrokesPerPiece = 24;

  /// The error is for people.
  [[nodiscard]] static tl::expected<std::unique_ptr<VirtualKeyboard>, std::string> open(
      Compositor& compositor, Loop& loop, OnRefused onRefused);
  VirtualKeyboard(const VirtualKeyboard&) = delete;
  VirtualKeyboard& operator=(const VirtualKeyboard&) = delete;
  ~VirtualKeyboard();

  /// Returns at once. `onEnd` is called once all was typed or refused.
  void type(const std::string& text, OnEnd onEnd);
  /// Refuses all that is not typed yet.
  void giveUp(const std::string& why);

 private:
  struct Text {
    std::string text;
    OnEnd onEnd;
  };

  VirtualKeyboard(Compositor& compositor, Loop& loop, zwp_virtual_keyboard_manager_v1* manager,
                  OnRefused onRefused);
  void sendKeymap();
  void beginText();
  void typePiece();
  void continueText();
  void typePieceIn(std::chrono::milliseconds delay);
  std::size_t prepareKeys();
  void endText();
  void refuseRest(const std::string& why);
  /// Runs `step` when the compositor has handled what was sent, unless this is gone by then.
  void after(void (VirtualKeyboard::*step)());
  std::string whyNotTyped() const;

  Compositor& compositor_;
  Loop& loop_;
  OnRefused onRefused_;
  zwp_virtual_keyboard_manager_v1* manager_;
  zwp_virtual_keyboard_v1* keyboard_;
  std::unique_ptr<ActiveWindow> activeWindow_;  // null if the compositor does not tell
  TextKeymap keymap_;
  bool isKeymapSent_ = false;  // for the first text
  bool isFresh_ = false;       // nothing was typed since the keymap began again
  std::deque<Text> texts_;     // the first one is being typed
  std::string whole_;          // of the first text, with the space before it
  std::u32string characters_;  // of `whole_`
  std::size_t typed_ = 0;      // of `characters_`
  ActiveWindow::Id window_ = ActiveWindow::kNone;
  ActiveWindow::Id lastWindow_ = ActiveWindow::kNone;
  std::string lastText_;  // typed into that window
  std::unique_ptr<Loop::Timer> timer_;
  std::shared_ptr<bool> isAlive_ = std::make_shared<bool>(true);
};

}  // namespace voxtrel::quillback
