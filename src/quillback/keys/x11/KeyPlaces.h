#pragma once

#include "common/settings/HotkeyTable.h"
#include "common/x11/XConnection.h"
#include "quillback/keys/PushToTalk.h"

namespace voxtrel::quillback {

/// The server's numbers of the keys that a hotkey needs, found by the places that the server's key
/// names stand for (RALT, BKSL, ...), not by what is printed on them: the right Alt key stays the
/// hotkey where the layout makes it AltGr. Where the server names no keys, its numbers are taken for
/// those of evdev plus 8.
PushToTalk::Codes keyPlaces(const XConnection& server, const Hotkey& hotkey);

}  // namespace voxtrel::quillback
