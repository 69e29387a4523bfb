#include "common/settings/ConfigManager.h"

#include <exception>
#include <filesystem>
#include <fstream>
#include <utility>

#include "common/settings/HotkeyTable.h"
#include "common/settings/SettingsWriter.h"
#include "common/settings/TextFile.h"

namespace voxtrel {
namespace {

namespace fs = std::filesystem;

std::string withoutTrailingSeparators(std::string path) {
  path.erase(path.find_last_not_of('/') + 1);
  return path;
}

/// Writes into the file at `path`, following links. On failure it leaves no half-written file and does
/// not touch what is not a regular file (a FIFO is not waited for).
void writeFile(const std::string& path, std::string_view bytes) {
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (fs::exists(status) && !fs::is_regular_file(status)) return;
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  if (!file) return;
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  file.close();
  if (!file) fs::remove(path, error);
}

/// Renames unless something is at `to`: nothing is overwritten.
void moveItem(const std::string& from, const std::string& to) {
  std::error_code error;
  if (fs::exists(fs::symlink_status(to, error))) return;
  fs::rename(from, to, error);
}

/// Each step runs whether or not the one before it succeeded: if the new file cannot be written, the
/// old one is still removed, and the engine runs with its defaults.
void replaceFile(const std::string& path, const ModelSettings& settings) {
  std::error_code error;
  fs::create_directories(fs::path(path).parent_path(), error);
  const std::string temporary = path + ".tmp";
  writeFile(temporary, withSettings(readTextFile(path).value_or(""), settings));
  fs::remove_all(path, error);
  moveItem(temporary, path);
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
    replaceFile(configPath_, settings);
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
