// Any bytes as the engine's settings: nothing breaks, the settings are those that the application
// reads, and every mistake is one line that cannot be taken for anything else.

#include <algorithm>
#include <string>

#include "common/settings/ConfigManager.h"
#include "common/settings/SettingsReader.h"
#include "fuzz/FuzzEntry.h"
#include "quillback/settings/EngineSettings.h"

using namespace voxtrel;
using quillback::EngineSettings;
using quillback::SettingsReading;

namespace {

void requireTheApplications(const ModelSettings& shared, const EngineSettings& settings) {
  require(settings.model == shared.model, "the model is the one that the application reads");
  require(settings.language == shared.language, "so is the language");
  require(settings.translate == shared.translate, "so is the translation");
  require(settings.hotkey.code == ConfigManager::hotkeyNameToCode(shared.hotkey),
          "so is the hotkey");
}

void requireWithinLimits(const EngineSettings& settings) {
  require(settings.engineModel.find('/') == std::string::npos, "a model's name is no path");
  require(settings.prompt.size() <= 1000, "a prompt has its limit");
  require(settings.words.size() <= 100, "so have the words");
  require(settings.replace.size() <= 200, "so have the replacements");
  require(settings.threads >= 0 && settings.threads <= 256, "so have the threads");
  require(!settings.unloadAfter || settings.unloadAfter->count() >= 1, "and the idle time");
}

void requirePlain(const std::string& error) {
  require(error.starts_with("[quillback] ERROR"), "a mistake is an error line");
  require(std::ranges::all_of(error, [](char c) { return c >= ' ' && c <= '~'; }),
          "an error line is plain text");
  for (const char* marker : {"Ready.", "Recording...", "Processing", "encode=", "Audio capture",
                             "Accessibility", "Microphone", "[gpu-decode]"}) {
    require(error.find(marker) == std::string::npos, "an error line says nothing else");
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(data, data + size);
  const SettingsReading reading = quillback::parseEngineSettings(text);
  requireTheApplications(parseSettings(text), reading.settings);
  require(reading.errors.size() <= 11, "there is one mistake for each key at most");
  for (const std::string& error : reading.errors) requirePlain(error);
  requireWithinLimits(reading.settings);
  return 0;
}
