#pragma once

#include <string>

namespace voxtrel {

/// The engine's settings that the application reads and edits.
/// Thread: any, as a value.
struct ModelSettings {
  std::string language = "auto";     ///< Whisper language code; "auto" detects the language
  bool translate = false;            ///< true: to English; false: keep the spoken language
  std::string hotkey = "right_cmd";  ///< a hotkey's name, as the file gives it
  std::string model = "large-v3";    ///< Whisper model; also names its folder of weights

  bool operator==(const ModelSettings&) const = default;
};

}  // namespace voxtrel
