#include "quillback/insertion/TextSinks.h"

#include <utility>

#include "quillback/insertion/DroppedText.h"
#include "quillback/insertion/clipboard/ClipboardText.h"
#include "quillback/insertion/clipboard/WaylandClipboard.h"
#include "quillback/insertion/clipboard/X11Clipboard.h"
#include "quillback/insertion/x11/TypedText.h"

namespace voxtrel::quillback {

std::unique_ptr<TextSink> TextSinks::make(EngineSettings::Insert insert, SessionKind session) {
  if (insert == EngineSettings::Insert::none) return std::make_unique<DroppedText>();
  const bool canType = session == SessionKind::x11;
  auto clipboard = makeClipboard(session);
  if (insert == EngineSettings::Insert::clipboard || !canType) return clipboard;
  auto [typed, otherwise, why] = TypedText::open(loop_, ownKeys_, std::move(clipboard));
  if (typed) return std::move(typed);
  output_.print("[quillback] Words are not typed but copied: " + why);
  return std::move(otherwise);
}

std::unique_ptr<TextSink> TextSinks::makeClipboard(SessionKind session) {
  if (session == SessionKind::wayland) {
    return std::make_unique<ClipboardText>(std::make_unique<WaylandClipboard>(helpers_), helpers_);
  }
  auto clipboard = X11Clipboard::open(loop_);
  if (clipboard) return std::make_unique<ClipboardText>(std::move(clipboard), helpers_);
  output_.print("[quillback] Words are only printed: there is no desktop to copy them to");
  return std::make_unique<DroppedText>();
}

}  // namespace voxtrel::quillback
