#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>

namespace voxtrel::quillback {

// The lines of the engine's output that its reader understands. The reader goes by the words in a
// line, so no other line may contain any of them.

inline constexpr std::string_view kReadyLine = "Ready.";
inline constexpr std::string_view kRecordingLine = "Recording...";

/// Printed once after the screen was locked while the user dictated; the second one if recordings wait
/// for a retry.
inline constexpr std::string_view kLockedLine =
    "[quillback] The screen was locked: nothing was recorded or typed meanwhile";
inline constexpr std::string_view kLockedWordsLine =
    "[quillback] The screen was locked: what was said before was not typed; \"quillback retry\" "
    "prints "
    "it";

/// "Processing 2.3s audio", with a point in every locale.
std::string processingLine(std::size_t samples);
/// `[gpu-decode] text: "…"`; quotes in the text are not escaped.
std::string textLine(std::string_view text);
/// Whether the reader takes a line with these words for a new state.
bool saysState(std::string_view words);
/// "encode=12ms decode=345ms"
std::string timingLine(std::chrono::microseconds encode, std::chrono::microseconds decode);
/// "Audio capture failed: …"
std::string captureFailedLine(std::string_view why);

}  // namespace voxtrel::quillback
