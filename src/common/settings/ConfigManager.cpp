#include "common/settings/ConfigManager.h"

#include <exception>
#include <filesystem>
#include <utility>

#include "common/settings/HotkeyTable.h"
#include "common/settings/SavedFile.h"
#include "common/settings/SettingsWriter.h"
#include "common/settings/TextFile.h"

namespace voxtrel {
namespace {

namespace fs = std::filesystem;

std::string withoutTrailingSeparators(std::string path) {
  path.erase(path.find_last_not_of('/') + 1);
  return path;
}

}  // namespace

ConfigManager::ConfigManager(std::string homeDirectory)
    : homeDirectory_(withoutTrailingSeparators(std::move(homeDirectory))),
      configPath_(homeDirectory_ + "/.config/quillback/config.toml") {}

ModelSettings ConfigManager::readSettings() const {
  const auto text = readTextFile(configPath_);
  return text ? parseSettings(*text) : ModelSettings();
}

void ConfigManager::writeSettings(const ModelSettings& settings) const {
  try {
    std::error_code error;
    fs::create_directories(fs::path(configPath_).parent_path(), error);
    saveFile(configPath_, withSettings(readTextFile(configPath_).value_or(""), settings));
  } catch (const std::exception&) {  // out of memory; no failure is reported
    return;
  }
}

std::string ConfigManager::readWhisperModel() const {
  const auto text = readTextFile(configPath_);
  return text ? parseWhisperModel(*text) : ModelSettings().model;
}

std::string ConfigManager::weightsFolder(std::string_view model) const {
  return (homeDirectory_ + "/.local/share/quillback/weights/whisper-").append(model);
}

std::string ConfigManager::weightsManifestPath(std::string_view model) const {
  return weightsFolder(model) + "/manifest.json";
}

bool ConfigManager::weightsExist(std::string_view model) const {
  // No file name holds a NUL; the system would cut the path there.
  if (model.find('\0') != std::string_view::npos) return false;
  std::error_code error;
  return fs::exists(weightsManifestPath(model), error);
}

std::int64_t ConfigManager::hotkeyNameToCode(std::string_view name) {
  const Hotkey* hotkey = hotkeyNamed(name);
  return (hotkey == nullptr ? kDefaultHotkey : *hotkey).code;
}

std::string_view ConfigManager::hotkeyCodeToName(std::int64_t code) {
  const Hotkey* hotkey = hotkeyWithCode(code);
  return (hotkey == nullptr ? kDefaultHotkey : *hotkey).name;
}

}  // namespace voxtrel
