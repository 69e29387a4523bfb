#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "common/settings/HotkeyTable.h"
#include "quillback/text/TextRules.h"

namespace voxtrel::quillback {

/// What the user has chosen; every field starts at its default.
/// Thread: any, as a value.
struct EngineSettings {
  enum class Insert { type, clipboard, none };
  enum class PasteKey { ctrlV, ctrlShiftV, shiftInsert };

  // Read by the same rules as in the application's settings window.
  std::string model = "large-v3";  ///< also names the folder of its weights
  std::string language = "auto";   ///< a language code; "auto" detects the language
  bool translate = false;          ///< to English
  Hotkey hotkey = kDefaultHotkey;

  // The engine's own, in TOML.
  std::string engineModel;                          ///< [engine] model; empty: none
  std::optional<std::chrono::seconds> unloadAfter;  ///< [engine] unload_after; none: stays loaded
  std::string prompt;                ///< [model] prompt: text that the recogniser takes for said
  std::vector<std::string> words;    ///< [model] words that may be said, such as names
  int threads = 0;                   ///< [model] threads, up to 256; 0: one per physical core
  Insert insert = Insert::type;      ///< [output] insert: "type", "clipboard" or "none"
  PasteKey paste = PasteKey::ctrlV;  ///< [output] paste: the key that pastes in the user's programs
  bool notifyText = false;  ///< [output] notify_text: notifications of copied words show the words
  std::vector<TextRule> replace;  ///< [output] replace

  /// The model to recognise with: the engine's own key counts more than the window's.
  const std::string& chosenModel() const { return engineModel.empty() ? model : engineModel; }
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
