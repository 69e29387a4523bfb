#pragma once

#include <memory>
#include <string>

#include "quillback/recognition/SpeechEngine.h"
#include "quillback/recognition/SpeechSettings.h"

namespace voxtrel::quillback {

// One of two folders is built: whisper, where the library was found, or no_whisper.

/// Whether this program can use Whisper's weights.
bool isWhisperBuiltIn();

/// An engine for the weights in `weightsFile`. Only where isWhisperBuiltIn().
std::unique_ptr<SpeechEngine> makeWhisperEngine(const std::string& weightsFile,
                                                const SpeechSettings& settings);

}  // namespace voxtrel::quillback
