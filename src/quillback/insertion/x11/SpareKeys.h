#pragma once

#include <cstdint>
#include <map>

#include "common/x11/XConnection.h"

namespace voxtrel::quillback {

/// Gives characters to keys that do nothing, and takes them back.
/// Thread: the loop's.  Borrows: XConnection (must outlive this).
class SpareKeys {
 public:
  explicit SpareKeys(const XConnection& server) : server_(server) {}
  SpareKeys(const SpareKeys&) = delete;
  SpareKeys& operator=(const SpareKeys&) = delete;
  ~SpareKeys() { restore(); }

  /// From now on these keys write these characters, with Shift as without.
  void assign(const std::map<std::uint8_t, char32_t>& characters);
  /// The keys do nothing again, but for those that a new keymap has overwritten meanwhile.
  void restore();
  bool areAssigned() const { return !assigned_.empty(); }

 private:
  void map(std::uint8_t code, xcb_keysym_t keysym);

  const XConnection& server_;
  std::map<std::uint8_t, xcb_keysym_t> assigned_;
};

}  // namespace voxtrel::quillback
