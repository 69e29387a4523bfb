#include "quillback/keys/PushToTalk.h"

#include <utility>

namespace voxtrel::quillback {

PushToTalk::PushToTalk(Codes codes, KeyWatch::Listener listener)
    : codes_(codes), listener_(std::move(listener)) {}

bool PushToTalk::isShift(int code) const {
  return code == codes_.leftShift || code == codes_.rightShift;
}

void PushToTalk::down(Keyboard keyboard, int code) {
  if (code == Codes::kNone) return;
  if (isShift(code)) shifts_.emplace(keyboard, code);
  if (code == codes_.hotkey) {
    const bool wasHeld = isHeld();
    if (!wasHeld && codes_.needsShift && shifts_.empty()) return;
    holders_.insert(keyboard);
    if (wasHeld) return;
    cancelled_ = false;
    listener_.onPressed();
  } else if (code == codes_.escape && isHeld() && !cancelled_) {
    cancelled_ = true;
    listener_.onCancelled();
  }
}

void PushToTalk::up(Keyboard keyboard, int code) {
  if (code == Codes::kNone) return;
  if (isShift(code)) shifts_.erase({keyboard, code});
  if (code == codes_.hotkey && holders_.erase(keyboard) > 0 && !isHeld()) listener_.onReleased();
}

void PushToTalk::gone(Keyboard keyboard) {
  std::erase_if(shifts_, [keyboard](const auto& shift) { return shift.first == keyboard; });
  if (holders_.erase(keyboard) > 0 && !isHeld()) listener_.onReleased();
}

void PushToTalk::release() {
  if (!isHeld()) return;
  holders_.clear();
  listener_.onReleased();
}

void PushToTalk::allGone() {
  shifts_.clear();
  release();
}

void PushToTalk::setCodes(const Codes& codes) {
  if (codes == codes_) return;
  const bool moved = codes.hotkey != codes_.hotkey;
  codes_ = codes;
  shifts_.clear();
  if (moved) release();
}

}  // namespace voxtrel::quillback
