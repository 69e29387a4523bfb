// Any bytes as the engine's settings: nothing breaks, and every mistake is one line that passes for
// nothing but what it is.

#include <algorithm>
#include <array>
#include <string>

#include "fuzz/FuzzEntry.h"
#include "quillback/settings/EngineSettings.h"

using voxtrel::require;
using voxtrel::quillback::parseSettings;
using voxtrel::quillback::SettingsReading;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(data, data + size);
  const SettingsReading reading = parseSettings(text);
  require(!reading.settings.model.empty(), "there is always a model");
  require(!reading.settings.language.empty(), "there is always a language");
  require(voxtrel::quillback::hotkeyWithCode(reading.settings.hotkey.code).has_value(),
          "the hotkey is one of the table's");
  require(reading.errors.size() <= 6, "one mistake for each key at most");
  for (const std::string& error : reading.errors) {
    require(error.starts_with("[quillback] ERROR"), "a mistake is an error line");
    require(std::ranges::all_of(error, [](char c) { return c >= ' ' && c <= '~'; }),
            "an error line is plain text");
    for (const char* marker : {"Ready.", "Recording...", "Processing", "encode=", "Audio capture",
                               "Accessibility", "Microphone", "[gpu-decode]"}) {
      require(error.find(marker) == std::string::npos, "an error line says nothing else");
    }
  }
  return 0;
}
