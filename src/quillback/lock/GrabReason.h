#pragma once

#include "common/x11/XConnection.h"

namespace voxtrel::quillback {

/// Whether what is on the screen explains a keyboard grab that is no lock: a menu is open, or the window
/// with the focus belongs to a program that takes the keyboard while it has the focus, such as a virtual
/// machine. Unmanaged windows over half of the screen or more say that it is a lock, whatever else is there.
/// Thread: one. Blocks for a few round trips.
/// Fails by: false.
bool isGrabHarmless(const XConnection& server);

}  // namespace voxtrel::quillback
