#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "quillback/settings/EngineSettings.h"

namespace voxtrel::quillback {

/// The line of output about a value that cannot be used. `line` counts from 1; 0 means the whole file.
/// `what` never quotes the file, whose text must not look like one of the engine's own lines.
std::string settingsErrorLine(std::size_t line, std::string_view what);

/// Reads the keys that only the engine knows. They are TOML: if `text` is not, they keep their
/// defaults and one line says so.
void readOwnSettings(std::string_view text, SettingsReading& reading);

}  // namespace voxtrel::quillback
