#include "quillback/dictation/PrintedLines.h"

#include "quillback/ports/Microphone.h"

namespace voxtrel::quillback {
namespace {

std::string milliseconds(std::chrono::microseconds time) {
  return std::to_string(std::chrono::round<std::chrono::milliseconds>(time).count()) + "ms";
}

}  // namespace

std::string processingLine(std::size_t samples) {
  constexpr std::size_t kSamplesPerTenth = kSampleRateHz / 10;
  const std::size_t tenths = (samples + kSamplesPerTenth / 2) / kSamplesPerTenth;
  return "Processing " + std::to_string(tenths / 10) + '.' + std::to_string(tenths % 10) +
         "s audio";
}

std::string textLine(std::string_view text) {
  return std::string("[gpu-decode] text: \"").append(text).append("\"");
}

bool saysState(std::string_view words) {
  const auto has = [words](std::string_view mark) {
    return words.find(mark) != std::string_view::npos;
  };
  return has(kRecordingLine) || has(kReadyLine) || has("encode=") ||
         (has("Processing") && has("audio"));
}

std::string timingLine(std::chrono::microseconds encode, std::chrono::microseconds decode) {
  return "encode=" + milliseconds(encode) + " decode=" + milliseconds(decode);
}

std::string captureFailedLine(std::string_view why) {
  return std::string("Audio capture failed: ").append(why);
}

}  // namespace voxtrel::quillback
