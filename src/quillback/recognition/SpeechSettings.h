#pragma once

#include <string>

namespace voxtrel::quillback {

/// What the user has chosen about recognition.
struct SpeechSettings {
  std::string model = "large-v3";  ///< of Whisper; names the folder of its weights
  std::string language = "auto";   ///< a language's code; "auto" detects it
  bool translate = false;          ///< to English
};

}  // namespace voxtrel::quillback
