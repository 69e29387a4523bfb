#pragma once

#include <memory>

#include "quillback/insertion/clipboard/DesktopPrograms.h"
#include "quillback/ports/PasteClipboard.h"

namespace voxtrel::quillback {

/// The clipboard by way of wl-copy, for desktops that have no other way. It opens a window for a moment,
/// reads nothing and does not know who reads.
/// Thread: the loop's.  Borrows: DesktopPrograms, Loop (must outlive this).
class WlCopyClipboard final : public PasteClipboard {
 public:
  WlCopyClipboard(DesktopPrograms& programs, Loop& loop) : programs_(programs), loop_(loop) {}

  void read(OnContent onContent) override { onContent({}); }
  ClipboardContent stopReading() override { return {}; }
  void offer(ClipboardContent content, OnOffered onOffered, OnRead onRead) override;
  bool holdsOffer() const override { return false; }
  bool seesReads() const override { return false; }
  bool isWatched() const override { return false; }

 private:
  DesktopPrograms& programs_;
  Loop& loop_;
  std::unique_ptr<Loop::Timer> timer_;
  std::shared_ptr<bool> isAlive_ = std::make_shared<bool>(true);
};

}  // namespace voxtrel::quillback
