#include "quillback/insertion/portal/PortalPaste.h"

#include <linux/input-event-codes.h>
#include <xkbcommon/xkbcommon-keysyms.h>

#include <utility>
#include <vector>

namespace voxtrel::quillback {
namespace {

/// How long a text waits for a session that is opened without a question.
constexpr std::chrono::seconds kOpeningTimeout{2};

}  // namespace

PortalPaste::PortalPaste(Loop& loop, Parts parts)
    : loop_(loop),
      parts_(std::move(parts)),
      focused_(loop),
      queue_(loop, {[this] { return clipboard(); }, [this] { return parts_.lock.isLocked(); },
                    [this](PasteQueue::OnFocus onFocus) { focused_.ask(std::move(onFocus)); },
                    [this] { pressPasteKey(); },
                    [this](const std::string& text, const std::string& why) {
                      parts_.onRefused(text, why);
                    }}) {}

void PortalPaste::open(EngineSettings::PasteKey key) {
  key_ = key;
  desktop_ = std::make_unique<RemoteDesktop>(
      loop_, parts_.compositorsClipboard() == nullptr,
      RemoteDesktop::Callbacks{[this] {
                                 openingTimeout_.reset();
                                 queue_.open();
                               },
                               [this](const std::string& why) {
                                 openingTimeout_.reset();
                                 queue_.close(why);
                               },
                               parts_.onAsking, parts_.onConsentRefused});
  desktop_->open();
}

PasteClipboard* PortalPaste::clipboard() {
  if (PasteClipboard* const compositors = parts_.compositorsClipboard()) return compositors;
  if (PasteClipboard* const sessions = desktop_->clipboard()) return sessions;
  return &parts_.lastClipboard();
}

/// Places and not symbols: desktops lose a symbol that the layout lacks. A program under a layout without
/// Latin letters goes by the usual places.
void PortalPaste::pressPasteKey() {
  using enum EngineSettings::PasteKey;
  const auto key = key_ == ctrlV && focused_.isTerminal() ? ctrlShiftV : key_;
  std::vector<int> keys;
  if (key != shiftInsert) keys.push_back(parts_.keyOf(XKB_KEY_Control_L, KEY_LEFTCTRL));
  if (key != ctrlV) keys.push_back(parts_.keyOf(XKB_KEY_Shift_L, KEY_LEFTSHIFT));
  keys.push_back(key == shiftInsert ? parts_.keyOf(XKB_KEY_Insert, KEY_INSERT)
                                    : parts_.keyOf(XKB_KEY_v, KEY_V));
  desktop_->press(keys);
}

bool PortalPaste::paste(const std::string& text, PasteQueue::OnEnd onEnd) {
  if (!desktop_) return false;
  desktop_->open();
  if (!desktop_->isReady() && !desktop_->isOpeningQuietly()) return false;
  if (!desktop_->isReady()) {
    openingTimeout_ =
        loop_.after(kOpeningTimeout, [this] { queue_.close("the desktop does not answer"); });
  }
  queue_.add(text, std::move(onEnd));
  return true;
}

bool PortalPaste::copy(const std::string& text) {
  PasteClipboard* const clipboard = desktop_ ? desktop_->clipboard() : nullptr;
  if (clipboard == nullptr) return false;
  clipboard->offer(textContent(text), {}, {});
  return true;
}

std::string_view pasteKeyName(EngineSettings::PasteKey key) {
  using enum EngineSettings::PasteKey;
  if (key == ctrlShiftV) return "Ctrl+Shift+V";
  return key == shiftInsert ? "Shift+Insert" : "Ctrl+V";
}

}  // namespace voxtrel::quillback
