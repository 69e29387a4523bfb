#pragma once

#include <string>
#include <string_view>

#include "common/base/Lines.h"
#include "voxtrel/supervisor/LineProtocol.h"

namespace voxtrel {

/// "idle error text<one> line<...>": what a line did, or nothing for a line without effect.
inline std::string reportOf(std::string_view line, const LineEffects& effects) {
  if (!effects.state && !effects.isError && !effects.transcription) return {};
  std::string report;
  if (effects.state == AppState::recording) report += "recording ";
  if (effects.state == AppState::processing) report += "processing ";
  if (effects.state == AppState::idle) report += "idle ";
  if (effects.isError) report += "error ";
  if (effects.transcription) report += "text<" + std::string(*effects.transcription) + "> ";
  return report + "line<" + std::string(line) + ">\n";
}

/// What the chunk does, as interpretChunk finds it.
inline std::string reportByChunk(std::string_view chunk) {
  std::string report;
  interpretChunk(chunk, [&report](std::string_view line, const LineEffects& effects) {
    report += reportOf(line, effects) + (effects.state || effects.isError || effects.transcription
                                             ? ""
                                             : "a line without effect\n");
  });
  return report;
}

/// What the chunk does, line after line.
inline std::string reportByLine(std::string_view chunk) {
  std::string report;
  forEachLine(chunk,
              [&report](std::string_view line) { report += reportOf(line, interpretLine(line)); });
  return report;
}

}  // namespace voxtrel
