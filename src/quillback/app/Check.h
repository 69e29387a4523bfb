#pragma once

#include "quillback/ports/Output.h"
#include "quillback/settings/EngineSettings.h"

namespace voxtrel::quillback {

/// Prints what a running engine would use here, one line a thing, each with its name, a colon and a
/// text for people. The first line is the key's: "key: yes, ..." or "key: no, ...".
/// Returns 0 if the key can be seen, else 1.
int printCheck(const EngineSettings& settings, Output& output);

}  // namespace voxtrel::quillback
