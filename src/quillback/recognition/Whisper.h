#pragma once

#include <memory>
#include <string>

#include "quillback/recognition/RecogniserBackend.h"

namespace voxtrel::quillback {

// CMake picks the room that defines these: `whisper` where the library was found, else
// `no_whisper`.

struct WhisperOptions {
  std::string language = "auto";  ///< a language code; "auto" detects the language
  bool translate = false;         ///< to English
};

/// Whether this build can use Whisper's weights.
bool isWhisperBuiltIn();

/// The backend for the weights in `weightsFile`; null in a build without Whisper.
std::unique_ptr<RecogniserBackend> makeWhisperBackend(const std::string& weightsFile,
                                                      const WhisperOptions& options);

}  // namespace voxtrel::quillback
