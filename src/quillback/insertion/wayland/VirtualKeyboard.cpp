#include "quillback/insertion/wayland/VirtualKeyboard.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <utility>

#include "common/posix/FileDescriptor.h"
#include "common/posix/WriteAll.h"
#include "quillback/text/Typeable.h"
#include "virtual-keyboard-v1-client.h"

namespace voxtrel::quillback {
namespace {

/// A file in memory with the text and the zero that ends it; nothing open if there is no memory.
FileDescriptor keymapFile(const std::string& text) {
  FileDescriptor file(memfd_create("quillback-keymap", MFD_CLOEXEC));
  if (file.isOpen() && !writeAll(file.get(), {text.c_str(), text.size() + 1})) return {};
  return file;
}

/// How long the X server within the compositor and its clients get to read a changed keymap. Keys that
/// arrive earlier are lost or read by the old one.
constexpr std::chrono::milliseconds kKeymapDelay{25};
constexpr std::chrono::milliseconds kPieceInterval{10};
/// How long clients get to read typed keys before the keys mean something else.
constexpr std::chrono::milliseconds kReadTime{100};

std::uint32_t milliseconds() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return static_cast<std::uint32_t>(
      std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
}

}  // namespace

tl::expected<std::unique_ptr<VirtualKeyboard>, std::string> VirtualKeyboard::open(
    Compositor& compositor, Loop& loop, OnRefused onRefused) {
  if (compositor.seat() == nullptr) return tl::make_unexpected("the compositor has no seat");
  auto* const manager = compositor.bind<zwp_virtual_keyboard_manager_v1>(
      zwp_virtual_keyboard_manager_v1_interface, 1);
  if (manager == nullptr) return tl::make_unexpected("the compositor has no virtual keyboards");
  return std::unique_ptr<VirtualKeyboard>(
      new VirtualKeyboard(compositor, loop, manager, std::move(onRefused)));
}

VirtualKeyboard::VirtualKeyboard(Compositor& compositor, Loop& loop,
                                 zwp_virtual_keyboard_manager_v1* manager, OnRefused onRefused)
    : compositor_(compositor),
      loop_(loop),
      onRefused_(std::move(onRefused)),
      manager_(manager),
      keyboard_(
          zwp_virtual_keyboard_manager_v1_create_virtual_keyboard(manager_, compositor.seat())),
      activeWindow_(ActiveWindow::open(compositor)) {
  // A seat that had no keyboard has one from now on; a client needs a moment to notice that.
  sendKeymap();
  compositor_.flush();
}

VirtualKeyboard::~VirtualKeyboard() {
  *isAlive_ = false;
  zwp_virtual_keyboard_v1_destroy(keyboard_);
  // Its manager has no request to destroy it.
  wl_proxy_destroy(static_cast<wl_proxy*>(static_cast<void*>(manager_)));
  compositor_.flush();
}

void VirtualKeyboard::sendKeymap() {
  const std::string text = keymap_.xkbText();
  const FileDescriptor file = keymapFile(text);
  zwp_virtual_keyboard_v1_keymap(keyboard_, WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1, file.get(),
                                 static_cast<std::uint32_t>(text.size() + 1));
}

void VirtualKeyboard::after(void (VirtualKeyboard::*step)()) {
  compositor_.sync([this, step, isAlive = isAlive_] {
    if (*isAlive) (this->*step)();
  });
}

void VirtualKeyboard::type(const std::string& text, OnEnd onEnd) {
  texts_.push_back({text, std::move(onEnd)});
  // After the answer the active window is known.
  if (texts_.size() == 1) after(&VirtualKeyboard::beginText);
}

void VirtualKeyboard::beginText() {
  if (texts_.empty()) return;
  window_ = activeWindow_ ? activeWindow_->id() : ActiveWindow::kNone;
  const bool follows = window_ == lastWindow_ && window_ != ActiveWindow::kNone;
  const std::string& text = texts_.front().text;
  whole_ = std::string(separatorBetween(follows ? lastText_ : "", text)) + text;
  characters_ = typeable(whole_);
  typed_ = 0;
  isKeymapSent_ = false;
  typePiece();
}

std::string VirtualKeyboard::whyNotTyped() const {
  if (!activeWindow_) return "";
  if (window_ == ActiveWindow::kNone) return "no window has the focus";
  return activeWindow_->id() == window_ ? "" : "the focus moved to another window";
}

void VirtualKeyboard::typePieceIn(std::chrono::milliseconds delay) {
  compositor_.flush();
  timer_ = loop_.after(delay, [this] { typePiece(); });
}

/// Gives the characters from `typed_` on their keys; returns how many have some by now. Of a text's first
/// piece it prepares the rest too, so that most texts need one change at most.
std::size_t VirtualKeyboard::prepareKeys() {
  const std::size_t wanted = typed_ == 0 ? characters_.size() : kStrokesPerPiece;
  const auto rest = std::u32string_view(characters_).substr(typed_, wanted);
  const std::size_t count = keymap_.add(rest);
  const bool isFull = count == 0 || (typed_ == 0 && count < rest.size());
  if (!isFull || std::exchange(isFresh_, true)) return std::min(count, kStrokesPerPiece);
  // What was typed before must have been read by then.
  timer_ = loop_.after(kReadTime, [this] {
    keymap_.restart();
    typePiece();
  });
  return 0;
}

/// Between pieces the client gets time to read: a compositor ends a client that has too much unread.
void VirtualKeyboard::continueText() {
  typed_ == characters_.size() ? typePiece() : typePieceIn(kPieceInterval);
}

void VirtualKeyboard::typePiece() {
  timer_.reset();
  if (texts_.empty()) return;
  if (typed_ == characters_.size()) return endText();
  if (const std::string why = whyNotTyped(); !why.empty()) return refuseRest(why);
  const std::size_t count = prepareKeys();
  if (count == 0) return;
  const bool hasChanged = keymap_.takeChange();
  // Sent again for each text, because sway gives every keyboard the user's layout when its configuration
  // is read again.
  if (hasChanged || !std::exchange(isKeymapSent_, true)) sendKeymap();
  if (hasChanged) return typePieceIn(kKeymapDelay);
  for (const char32_t character : std::u32string_view(characters_).substr(typed_, count)) {
    const std::uint32_t key = keymap_.keyOf(character);
    zwp_virtual_keyboard_v1_key(keyboard_, milliseconds(), key, WL_KEYBOARD_KEY_STATE_PRESSED);
    zwp_virtual_keyboard_v1_key(keyboard_, milliseconds(), key, WL_KEYBOARD_KEY_STATE_RELEASED);
  }
  isFresh_ = false;
  typed_ += count;
  after(&VirtualKeyboard::continueText);
}

void VirtualKeyboard::endText() {
  lastWindow_ = window_;
  const Text done = std::exchange(texts_.front(), {});
  lastText_ = done.text;
  texts_.pop_front();
  if (!texts_.empty()) after(&VirtualKeyboard::beginText);
  done.onEnd();
}

void VirtualKeyboard::refuseRest(const std::string& why) {
  const Text refused = std::exchange(texts_.front(), {});
  const std::string rest(typed_ == 0 ? refused.text : afterTyped(whole_, typed_));
  texts_.pop_front();
  lastWindow_ = ActiveWindow::kNone;
  if (!texts_.empty()) after(&VirtualKeyboard::beginText);
  onRefused_(rest, why);
  refused.onEnd();
}

void VirtualKeyboard::giveUp(const std::string& why) {
  while (!texts_.empty()) {
    refuseRest(why);
    typed_ = 0;
  }
}

}  // namespace voxtrel::quillback
