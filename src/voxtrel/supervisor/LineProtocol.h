#pragma once

#include <functional>
#include <optional>
#include <string_view>

#include "voxtrel/supervisor/AppState.h"

namespace voxtrel {

/// What one line of the engine's output means. A line can have several effects at once.
struct LineEffects {
  std::optional<AppState> state;                  ///< the engine is now in this state
  bool isError = false;                           ///< the whole line is an error text
  std::optional<std::string_view> transcription;  ///< part of the line: what the user said
};

/// Reads one line without newline characters. Any bytes are allowed.
LineEffects interpretLine(std::string_view line);

/// Splits `chunk`, UTF-8 text, into lines at every newline character and calls `apply`, in order, for
/// each line with an effect. Lines without effect are skipped at memory speed.
void interpretChunk(std::string_view chunk,
                    const std::function<void(std::string_view line, const LineEffects&)>& apply);

}  // namespace voxtrel
