#pragma once

#include <string>
#include <string_view>

#include "common/settings/SettingsReader.h"

namespace voxtrel {

/// `content` with the line "key = value" in [section]. It replaces the first line in a section of
/// this name that sets exactly this key; otherwise it goes under the last header of this name;
/// otherwise into a new section at the end. Every other line stays as it is, byte for byte.
/// Only `\n` ends a line, so a header followed by `\r` is not recognised. `section` is without its
/// brackets, `value` is written as it is.
std::string updateOrInsert(std::string_view content, std::string_view section, std::string_view key,
                           std::string_view value);

/// `content` with the five lines that carry the settings. Nothing in a value is escaped.
std::string withSettings(std::string_view content, const ModelSettings& settings);

}  // namespace voxtrel
