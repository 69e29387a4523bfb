#pragma once

#include <array>
#include <cstddef>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>

#include "support/ScratchFolder.h"

namespace voxtrel::testing {

/// What the user chooses in the settings window, and the file before and after "Save & Restart". The
/// windows of all desktops write these bytes.
struct SavedChoice {
  std::size_t hotkey;
  std::size_t inputLanguage;
  std::size_t output;
  std::string_view before;  ///< empty: there is no file
  std::string_view after;
};

inline constexpr std::array kSavedChoices = {
    SavedChoice{6, 11, 1, "",
                "\n[model]\ntranslate = true\nlanguage = \"de\"\nwhisper_model = \"large-v3\"\n"
                "\n[audio]\nhotkey = 'f6'\nhotkey_code = 97"},
    SavedChoice{4, 22, 0, "# mine\n[model]\nwhisper_model = \"small\"\nlanguage = \"fr\"\n",
                "# mine\n[model]\ntranslate = false\nwhisper_model = \"large-v3\"\n"
                "language = \"yue\"\n\n[audio]\nhotkey = 'shift+\\'\nhotkey_code = 42"},
    SavedChoice{0, 0, 0, "[audio]\nhotkey = \"f8\"\nhotkey_code = 100\nrate = 1 # kept",
                "[audio]\nhotkey = 'right_cmd'\nhotkey_code = 54\nrate = 1 # kept\n"
                "\n[model]\ntranslate = false\nlanguage = \"auto\"\nwhisper_model = \"large-v3\""},
};

inline constexpr std::string_view kSettingsPath = ".config/quillback/config.toml";

/// The settings file in a home; empty if there is none.
inline std::string settingsFile(const ScratchFolder& home) {
  const std::ifstream file(home.path() / kSettingsPath, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

}  // namespace voxtrel::testing
