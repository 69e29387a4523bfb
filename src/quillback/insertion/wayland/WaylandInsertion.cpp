#include "quillback/insertion/wayland/WaylandInsertion.h"

#include <utility>

#include "quillback/insertion/paste/PasteQueue.h"

namespace voxtrel::quillback {

void WaylandInsertion::connect() {
  if (compositor_) return;
  compositor_ = Compositor::open(loop_, [this] { lose(); });
  if (!compositor_) return;
  auto keyboard = VirtualKeyboard::open(*compositor_, loop_, onRefused_);
  if (keyboard) keyboard_ = std::move(*keyboard);
  clipboard_ = DataControlClipboard::open(*compositor_, loop_);
  if (keyboard_ || compositor_->seat() == nullptr) return;
  keymap_ = std::make_unique<SeatKeymap>(*compositor_);
  compositor_->flush();
}

void WaylandInsertion::lose() {
  const auto compositor = std::exchange(compositor_, nullptr);
  // What was made over the connection must not outlive it.
  const auto clipboard = std::exchange(clipboard_, nullptr);
  const auto keymap = std::exchange(keymap_, nullptr);
  const auto keyboard = std::exchange(keyboard_, nullptr);
  if (keyboard) keyboard->giveUp("the compositor is gone");
}

bool WaylandInsertion::canType() {
  connect();
  return keyboard_ != nullptr;
}

bool WaylandInsertion::canCopy() {
  connect();
  return clipboard_ != nullptr;
}

bool WaylandInsertion::copy(const std::string& text) {
  if (!canCopy()) return false;
  clipboard_->offer(textContent(text), {}, {});
  return true;
}

}  // namespace voxtrel::quillback
