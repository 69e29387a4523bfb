#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "common/settings/ModelSettings.h"

namespace voxtrel {

/// Knows where one user's engine configuration and model weights are, and reads them afresh on
/// every call; nothing is cached or logged.
/// Thread: any, as an immutable value.  Owns: the paths.
/// Fails by: defaults for what cannot be read, absence for what cannot be reached; never throws.
class ConfigManager {
 public:
  /// `homeDirectory` is absolute; separators at its end are dropped.
  explicit ConfigManager(std::string homeDirectory);

  const std::string& configPath() const { return configPath_; }

  ModelSettings readSettings() const;

  /// Puts the settings into the file, every other line of which stays. Neither fails nor reports:
  /// where the new text cannot be written, the old file goes all the same.
  void writeSettings(const ModelSettings& settings) const;

  /// The first model's name in the file, where readSettings() gives the last.
  std::string readWhisperModel() const;

  /// The file that marks the model's weights as present. The name is taken as it is.
  std::string weightsManifestPath(std::string_view model) const;

  /// Whether anything, a folder too, is at weightsManifestPath(model); links are followed.
  bool weightsExist(std::string_view model) const;

  /// The code of the hotkey with exactly this name, aliases included; 54 for any other.
  static std::int64_t hotkeyNameToCode(std::string_view name);

  /// The canonical name of the hotkey with this code; "right_cmd" for any other.
  static std::string_view hotkeyCodeToName(std::int64_t code);

 private:
  std::string homeDirectory_;
  std::string configPath_;
};

}  // namespace voxtrel
