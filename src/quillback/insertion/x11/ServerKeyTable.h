#pragma once

#include <optional>

#include "common/x11/XConnection.h"
#include "quillback/insertion/x11/KeyTable.h"

namespace voxtrel::quillback {

/// How the server's keyboard writes in the layout that is chosen now; nothing where it does not
/// answer.
std::optional<KeyTable> serverKeyTable(const XConnection& server);

}  // namespace voxtrel::quillback
