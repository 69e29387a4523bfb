#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace voxtrel::quillback {

/// A settings file's text, or one line of output that says why there is none.
struct SettingsFile {
  std::string text;
  std::string error;
};

/// No settings are as long as this.
inline constexpr std::size_t kLongestSettingsBytes = 1 << 20;

/// Reads the whole file; a missing one is empty. Never waits for a pipe or a device.
SettingsFile readSettingsFile(const std::string& path);

/// The line that tells of a mistake in the settings. `line` counts from 1; 0 where none is meant.
std::string settingsError(std::size_t line, std::string_view what);

}  // namespace voxtrel::quillback
