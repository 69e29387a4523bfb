#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "common/settings/HotkeyTable.h"

namespace voxtrel::quillback {

/// What the user has chosen; every field starts at its default.
/// Thread: any, as a value.
struct EngineSettings {
  enum class Insert { type, clipboard, none };

  // Read by the same rules as in the application's settings window.
  std::string model = "large-v3";  ///< also names the folder of its weights
  std::string language = "auto";   ///< a language code; "auto" detects the language
  bool translate = false;          ///< to English
  Hotkey hotkey = kDefaultHotkey;

  // The engine's own, in TOML.
  Insert insert = Insert::type;  ///< [output] insert: "type", "clipboard" or "none"
};

/// Settings, and a line of output for each value that could not be used.
struct SettingsReading {
  EngineSettings settings;
  std::vector<std::string> errors;
};

/// Reads the text of a settings file. What is not understood keeps its default and gives one line. If
/// the text is not TOML, that holds for the engine's own keys only. Unknown keys are ignored.
SettingsReading parseEngineSettings(std::string_view text);

/// Reads the settings file at `path`. A missing file gives the defaults; one that is unreadable, not
/// UTF-8 or larger than 1 MiB gives the defaults and one line. Never waits.
SettingsReading readEngineSettings(const std::string& path);

}  // namespace voxtrel::quillback
