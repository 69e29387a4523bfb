#include "config/ConfigManager.h"

#include <filesystem>
#include <optional>
#include <utility>

#include "config/HotkeyTable.h"
#include "config/SettingsReader.h"
#include "config/TextFile.h"

namespace voxtrel {
namespace {

std::string withoutTrailingSeparators(std::string path) {
  path.erase(path.find_last_not_of('/') + 1);
  return path;
}

}  // namespace

ConfigManager::ConfigManager(std::string homeDirectory)
    : homeDirectory_(withoutTrailingSeparators(std::move(homeDirectory))),
      configPath_(homeDirectory_ + "/.config/quillback/config.toml") {}

ModelSettings ConfigManager::readSettings() const {
  const std::optional<std::string> text = readTextFile(configPath_);
  return text ? parseSettings(*text) : ModelSettings();
}

std::string ConfigManager::readWhisperModel() const {
  const std::optional<std::string> text = readTextFile(configPath_);
  return text ? parseWhisperModel(*text) : ModelSettings().model;
}

std::string ConfigManager::weightsManifestPath(std::string_view model) const {
  return homeDirectory_ + "/.local/share/quillback/weights/whisper-" + std::string(model) +
         "/manifest.json";
}

bool ConfigManager::weightsExist(std::string_view model) const {
  // No file's name holds a NUL, and the system would ignore what follows it.
  if (model.find('\0') != std::string_view::npos) return false;
  std::error_code error;
  return std::filesystem::exists(weightsManifestPath(model), error);
}

std::int64_t ConfigManager::hotkeyNameToCode(std::string_view name) {
  return hotkeyCodeOf(name);
}

std::string_view ConfigManager::hotkeyCodeToName(std::int64_t code) {
  return hotkeyNameOf(code);
}

}  // namespace voxtrel
