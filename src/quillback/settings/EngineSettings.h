#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "quillback/settings/HotkeyTable.h"

namespace voxtrel::quillback {

/// What the user has chosen; every field starts at its default.
struct EngineSettings {
  enum class Insert { type, clipboard, none };

  std::string model = "large-v3";  ///< [model] whisper_model; names the folder of its weights, too
  std::string language = "auto";   ///< [model] language: a language's code, or "auto"
  bool translate = false;          ///< [model] translate: to English
  Hotkey hotkey = kDefaultHotkey;  ///< [audio] hotkey_code; without a good one, [audio] hotkey
  Insert insert = Insert::type;    ///< [output] insert: "type", "clipboard" or "none"
};

/// Settings and what was wrong with them: one line of output for each mistake.
struct SettingsReading {
  EngineSettings settings;
  std::vector<std::string> errors;
};

/// Reads the text of a settings file (TOML). A text that is no TOML gives one error, which names the
/// line, and the defaults. A key with a value of the wrong type or meaning gives one error and keeps
/// its default. Unknown keys and sections are somebody else's.
SettingsReading parseSettings(std::string_view text);

/// Reads the settings file at `path`. A missing file gives the defaults and no error; one that cannot
/// be read, is no regular file or is larger than any settings gives the defaults and one error.
/// Never waits.
SettingsReading readSettings(const std::string& path);

/// Where the settings are: below the user's home, which is $HOME, else what the system says.
std::string settingsPath(const std::string& home);

}  // namespace voxtrel::quillback
