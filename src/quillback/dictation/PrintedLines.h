#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>

namespace voxtrel::quillback {

// What the reader of the engine's output understands. Its wording is a protocol: a line means what
// words it holds, so no other line may hold any of them.

inline constexpr std::string_view kReadyLine = "Ready.";
inline constexpr std::string_view kRecordingLine = "Recording...";

/// "Processing 2.3s audio", whatever the locale's decimal point is.
std::string processingLine(std::size_t samples);
/// `[gpu-decode] text: "…"`; quotes within the text stay as they are.
std::string textLine(std::string_view text);
/// Whether the reader takes a line with these words for a new state.
bool saysState(std::string_view words);
/// "encode=12ms decode=345ms"
std::string timingLine(std::chrono::microseconds encode, std::chrono::microseconds decode);
/// "Audio capture failed: …"
std::string captureFailedLine(std::string_view why);

}  // namespace voxtrel::quillback
