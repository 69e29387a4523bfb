#pragma once

#include <cstdint>
#include <map>
#include <vector>

struct xkb_keymap;

namespace voxtrel::quillback {

/// A key to press, with what is held meanwhile.
struct KeyStroke {
  std::uint8_t code = 0;
  bool shift = false;
  bool level3 = false;  ///< the key that layouts call ISO_Level3_Shift, often AltGr

  bool operator==(const KeyStroke&) const = default;
};

/// How a keyboard writes characters in one of its layouts while nothing is locked.
struct KeyTable {
  std::map<char32_t, KeyStroke> strokes;
  std::uint8_t shiftCode = 0;        ///< 0 where there is none
  std::uint8_t level3Code = 0;       ///< 0 where there is none
  std::vector<std::uint8_t> spares;  ///< keys that do nothing and may be given a character
};

/// `layout` counts from 0. Keypads are left out: what they write depends on Num Lock.
KeyTable readKeyTable(xkb_keymap* keymap, std::uint32_t layout);

}  // namespace voxtrel::quillback
