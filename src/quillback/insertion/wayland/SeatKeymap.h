#pragma once

#include <xkbcommon/xkbcommon.h>

#include <cstdint>

#include "common/base/Handle.h"
#include "quillback/insertion/wayland/Compositor.h"

namespace voxtrel::quillback {

/// Where the user's keyboard has which symbol. The compositor tells each program, but not which of several
/// layouts is in use.
/// Thread: the loop's.  Owns: the keyboard's object.  Borrows: Compositor (must outlive this).
/// Fails by: the usual places.
class SeatKeymap {
 public:
  /// The only one that may listen to the compositor's seat, which must be there.
  explicit SeatKeymap(const Compositor& compositor);
  SeatKeymap(const SeatKeymap&) = delete;
  SeatKeymap& operator=(const SeatKeymap&) = delete;
  ~SeatKeymap();

  /// The key that writes the symbol without other keys, as the kernel's number: `usual` if that one does, by
  /// the first layout that has the symbol.
  int keyOf(std::uint32_t symbol, int usual) const;

 private:
  struct Callbacks;

  wl_keyboard* keyboard_ = nullptr;  // null until the seat has one
  Handle<xkb_keymap, xkb_keymap_unref> keymap_;
};

}  // namespace voxtrel::quillback
