#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "common/x11/XConnection.h"
#include "quillback/text/Typeable.h"

struct xkb_keymap;

namespace voxtrel::quillback {

/// A key to press, with the modifiers held meanwhile.
struct KeyStroke {
  std::uint8_t code = 0;
  bool shift = false;
  bool level3 = false;  ///< ISO_Level3_Shift, often AltGr

  bool operator==(const KeyStroke&) const = default;
};

/// How a keyboard writes characters and kReturn in one layout, without any lock.
struct KeyTable {
  std::map<char32_t, KeyStroke> strokes;
  std::uint8_t shiftCode = 0;        ///< 0 if there is none
  std::uint8_t level3Code = 0;       ///< 0 if there is none
  std::vector<std::uint8_t> spares;  ///< keys that do nothing
};

/// `layout` counts from 0. Keypad keys are left out, because they depend on Num Lock.
KeyTable readKeyTable(xkb_keymap* keymap, std::uint32_t layout);

/// The table of the server's keyboard in its current layout; none if the server does not reply.
std::optional<KeyTable> readKeyTable(const XConnection& server);

}  // namespace voxtrel::quillback
