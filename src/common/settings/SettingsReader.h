#pragma once

#include <string>
#include <string_view>

#include "common/settings/ModelSettings.h"

namespace voxtrel {

/// What the text of a configuration file says; defaults for what it leaves out. A deliberately
/// lenient reader of lines, not of TOML: no comments, keys found anywhere in a line, no escapes.
/// Where a key stands twice, the last one counts.
ModelSettings parseSettings(std::string_view text);

/// The model's name alone. Where it stands twice, the first one counts, unlike in parseSettings.
std::string parseWhisperModel(std::string_view text);

}  // namespace voxtrel
