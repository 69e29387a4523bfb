#pragma once

#include <string>
#include <string_view>

#include "common/settings/ModelSettings.h"

namespace voxtrel {

/// `content` with the line "key = value" in the section: in place of the first line of any section
/// of this name that sets exactly this key; else under the last of those sections' headers; else in
/// a section of its own at the end. Every other line stays as it is, byte for byte.
/// Lines end at line feeds alone, so a header before a carriage return is none. `section` is
/// without its brackets, `value` is written as it is.
std::string updateOrInsert(std::string_view content, std::string_view section, std::string_view key,
                           std::string_view value);

/// `content` with the five lines that carry the settings. Nothing in a value is escaped.
std::string withSettings(std::string_view content, const ModelSettings& settings);

}  // namespace voxtrel
