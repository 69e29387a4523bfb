#pragma once

#include "common/settings/HotkeyTable.h"
#include "common/x11/XConnection.h"
#include "quillback/keys/PushToTalk.h"

namespace voxtrel::quillback {

/// The server's codes of the hotkey's keys, found by their place on the keyboard: by the server's key
/// names (RALT, BKSL, ...), not by what they write. So the right Alt key stays the hotkey in layouts
/// that make it AltGr. Without key names, evdev's codes plus 8.
PushToTalk::Codes keyPlaces(const XConnection& server, const Hotkey& hotkey);

}  // namespace voxtrel::quillback
