#pragma once

#include <string>

#include "quillback/model/ModelStore.h"

namespace voxtrel::quillback {

/// Which recogniser works, and the line that says why.
struct RecogniserChoice {
  bool isWhisper = false;
  std::string line;  ///< empty for Whisper, which speaks for itself once it is loaded
};

/// What the line about the embedded recogniser says where nothing is wrong. `language` is that of the
/// settings.
std::string embeddedLine(const std::string& language);

/// Whisper where it is built in and its weights are there, else the embedded recogniser.
RecogniserChoice chooseRecogniser(bool isWhisperBuiltIn, const StoreState& store,
                                  const std::string& language);

/// An error line: `problem` (without a full stop), what to do about it, and what works meanwhile.
std::string whisperErrorLine(const std::string& problem);

}  // namespace voxtrel::quillback
