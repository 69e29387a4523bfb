#pragma once

#include <functional>
#include <optional>
#include <string>
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

/// Takes the dictated words out of an engine's output on its way to the log.
/// Thread: one.
class WordHider {
 public:
  /// The output's next bytes, with an ellipsis for all that follows the start of a transcription in
  /// its line. A line may be cut anywhere between two calls.
  std::string withoutWords(std::string_view bytes);

 private:
  std::size_t matched_ = 0;  // bytes of that start, before the next byte
  bool isInWords_ = false;
};

}  // namespace voxtrel
