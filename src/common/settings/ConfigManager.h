#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "common/settings/SettingsReader.h"

namespace voxtrel {

/// One user's settings file and model weights: where they are, and what is there now. Every call reads
/// the file again; nothing is cached or logged.
/// Thread: any, as an immutable value.  Owns: the paths.
/// Fails by: defaults for what cannot be read, false for what cannot be reached; never throws.
class ConfigManager {
 public:
  /// `homeDirectory` is absolute; separators at its end are dropped.
  explicit ConfigManager(std::string homeDirectory);

  const std::string& configPath() const { return configPath_; }

  ModelSettings readSettings() const;

  /// Puts the settings into the file and keeps its other lines. Reports no failure: if the new text
  /// cannot be written, the old file is still removed.
  void writeSettings(const ModelSettings& settings) const;

  /// The first model name in the file; readSettings() gives the last.
  std::string readWhisperModel() const;

  /// Where the weights of a model are kept. The name is taken as it is.
  std::string weightsFolder(std::string_view model) const;

  /// The file in that folder that marks the weights as present.
  std::string weightsManifestPath(std::string_view model) const;

  /// Whether there is a file or folder at weightsManifestPath(model); links are followed.
  bool weightsExist(std::string_view model) const;

  /// The code of the hotkey with exactly this name or alias; 54 for any other text.
  static std::int64_t hotkeyNameToCode(std::string_view name);

  /// The canonical name of the hotkey with this code; "right_cmd" for any other number.
  static std::string_view hotkeyCodeToName(std::int64_t code);

 private:
  std::string homeDirectory_;
  std::string configPath_;
};

}  // namespace voxtrel
