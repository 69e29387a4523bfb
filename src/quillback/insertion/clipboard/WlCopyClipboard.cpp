#include "quillback/insertion/clipboard/WlCopyClipboard.h"

#include <utility>

namespace voxtrel::quillback {
namespace {

/// How long the desktop gets for giving the focus back to the window that had it.
constexpr std::chrono::milliseconds kFocusTime{250};

}  // namespace

void WlCopyClipboard::offer(ClipboardContent content, OnOffered onOffered, OnRead /*onRead*/) {
  if (content.empty()) return;
  programs_.copy(content.front().second,
                 [this, onOffered, isAlive = std::weak_ptr(isAlive_)](bool isThere) {
                   if (isAlive.expired()) return;
                   timer_ = loop_.after(kFocusTime, [onOffered, isThere] { onOffered(isThere); });
                 });
}

}  // namespace voxtrel::quillback
