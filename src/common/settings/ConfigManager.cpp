#include "common/settings/ConfigManager.h"

#include <exception>
#include <filesystem>
#include <optional>
#include <utility>

#include "common/settings/HotkeyTable.h"
#include "common/settings/SettingsReader.h"
#include "common/settings/SettingsWriter.h"
#include "common/settings/TextFile.h"

namespace voxtrel {
namespace {

std::string withoutTrailingSeparators(std::string path) {
  path.erase(path.find_last_not_of('/') + 1);
  return path;
}

/// Puts `from` in the place of `to`, which must be free: nothing is overwritten.
void moveItem(const std::string& from, const std::string& to) {
  std::error_code error;
  if (std::filesystem::exists(std::filesystem::symlink_status(to, error))) return;
  std::filesystem::rename(from, to, error);
}

/// The steps do not look at each other's success: where the new file cannot be made, the old one
/// goes all the same, and the engine runs with its defaults.
void replaceFile(const std::string& path, const ModelSettings& settings) {
  std::error_code error;
  std::filesystem::create_directories(std::filesystem::path(path).parent_path(), error);
  const std::string text = withSettings(readTextFile(path).value_or(""), settings);
  const std::string temporary = path + ".tmp";
  writeTextFile(temporary, text);
  std::filesystem::remove_all(path, error);
  moveItem(temporary, path);
}

}  // namespace

ConfigManager::ConfigManager(std::string homeDirectory)
    : homeDirectory_(withoutTrailingSeparators(std::move(homeDirectory))),
      configPath_(homeDirectory_ + "/.config/quillback/config.toml") {}

ModelSettings ConfigManager::readSettings() const {
  const std::optional<std::string> text = readTextFile(configPath_);
  return text ? parseSettings(*text) : ModelSettings();
}

void ConfigManager::writeSettings(const ModelSettings& settings) const {
  try {
    replaceFile(configPath_, settings);
  } catch (const std::exception&) {  // no memory: nothing to be done, and nobody to tell
    return;
  }
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
