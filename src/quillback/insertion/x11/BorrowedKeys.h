#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "common/x11/XConnection.h"

namespace voxtrel::quillback {

/// A record on the X server of what the typer has changed on the keyboard: it outlives a typer that was
/// killed, so that the next one can give everything back. Of several typers only the first one keeps a
/// record.
/// Thread: the loop's.  Owns: a window, for its claim.  Borrows: XConnection (must outlive this).
/// Fails by: no claim; an empty record.
class BorrowedKeys {
 public:
  struct Record {
    std::uint8_t locks = 0;  ///< modifiers whose locks were turned off
    /// Key codes and what they may have been made to write; a code may stand here twice.
    std::vector<std::pair<std::uint8_t, xcb_keysym_t>> spares;

    bool isEmpty() const { return locks == 0 && spares.empty(); }
  };

  explicit BorrowedKeys(const XConnection& server);

  /// Becomes the one that keeps the record, unless a running typer does. What that one's predecessor
  /// has left, if it ended without giving it back.
  [[nodiscard]] Record claim();
  /// To be called before the keyboard is changed, and again after it was restored.
  void write(const Record& record) const;

 private:
  Record read() const;

  const XConnection& server_;
  xcb_atom_t claimAtom_;
  xcb_atom_t recordAtom_;
  xcb_window_t window_;
  bool isOwner_ = false;
};

}  // namespace voxtrel::quillback
