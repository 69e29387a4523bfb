#pragma once

#include <memory>

#include "quillback/insertion/clipboard/Clipboard.h"
#include "quillback/insertion/helpers/Helpers.h"
#include "quillback/ports/TextSink.h"

namespace voxtrel::quillback {

/// Puts each dictation into the clipboard and says so in a notification.
/// Thread: the loop's.  Owns: the clipboard.  Borrows: Helpers (must outlive this).
class ClipboardText final : public TextSink {
 public:
  ClipboardText(std::unique_ptr<Clipboard> clipboard, Helpers& helpers)
      : clipboard_(std::move(clipboard)), helpers_(helpers) {}

  void insert(const std::string& text) override {
    clipboard_->put(text);
    helpers_.notify("Copied: paste it where you want it", text);
  }

 private:
  std::unique_ptr<Clipboard> clipboard_;
  Helpers& helpers_;
};

}  // namespace voxtrel::quillback
