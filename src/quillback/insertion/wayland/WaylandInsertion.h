#pragma once

#include <memory>
#include <string>

#include "quillback/insertion/wayland/DataControlClipboard.h"
#include "quillback/insertion/wayland/SeatKeymap.h"
#include "quillback/insertion/wayland/VirtualKeyboard.h"

namespace voxtrel::quillback {

/// Types and copies by what the Wayland compositor offers. One that went away is looked for again at the
/// next text.
/// Thread: the loop's.  Owns: the connection.  Borrows: Loop (must outlive this).
/// Fails by: `false`; for a text that was begun, `onRefused` with the rest of it.
class WaylandInsertion {
 public:
  WaylandInsertion(Loop& loop, VirtualKeyboard::OnRefused onRefused)
      : loop_(loop), onRefused_(std::move(onRefused)) {}
  WaylandInsertion(const WaylandInsertion&) = delete;
  WaylandInsertion& operator=(const WaylandInsertion&) = delete;

  [[nodiscard]] bool canType();
  [[nodiscard]] bool canCopy();
  /// Only where `canType`.
  void type(const std::string& text, VirtualKeyboard::OnEnd onEnd) {
    keyboard_->type(text, std::move(onEnd));
  }
  /// False if the compositor lets no program copy without a window.
  [[nodiscard]] bool copy(const std::string& text);
  /// The same clipboard, or null; it goes with the connection.
  [[nodiscard]] PasteClipboard* clipboard() { return canCopy() ? clipboard_.get() : nullptr; }
  /// See SeatKeymap; `usual` without a compositor.
  int keyOf(std::uint32_t symbol, int usual) const {
    return keymap_ ? keymap_->keyOf(symbol, usual) : usual;
  }

 private:
  void connect();
  void lose();

  Loop& loop_;
  VirtualKeyboard::OnRefused onRefused_;
  // Destroyed in reverse order: what was made over the connection before the connection.
  std::unique_ptr<Compositor> compositor_;
  std::unique_ptr<VirtualKeyboard> keyboard_;
  std::unique_ptr<DataControlClipboard> clipboard_;
  std::unique_ptr<SeatKeymap> keymap_;  // where nothing can be typed
};

}  // namespace voxtrel::quillback
