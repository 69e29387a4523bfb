#pragma once

#include "quillback/insertion/clipboard/Clipboard.h"
#include "quillback/insertion/helpers/Helpers.h"

namespace voxtrel::quillback {

/// A Wayland desktop's clipboard, whose text a program of its own keeps.
/// Thread: the loop's.  Borrows: Helpers (must outlive this).
class WaylandClipboard final : public Clipboard {
 public:
  explicit WaylandClipboard(Helpers& helpers) : helpers_(helpers) {}

  void put(const std::string& text) override { helpers_.copy(text); }

 private:
  Helpers& helpers_;
};

}  // namespace voxtrel::quillback
