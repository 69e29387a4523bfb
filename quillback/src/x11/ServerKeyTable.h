#pragma once

#include <optional>

#include "x11/KeyTable.h"
#include "x11/XConnection.h"

namespace quillback {

/// How the server's keyboard writes in the layout that is chosen now; nothing where it does not
/// answer.
std::optional<KeyTable> serverKeyTable(const XConnection& server);

}  // namespace quillback
