#pragma once

#include <string>

#include "quillback/ports/Output.h"
#include "quillback/recognition/SpeechEngine.h"

namespace voxtrel::quillback {

/// How transcribing a file ended; the numbers are the program's exit status (2 means wrong use).
enum class TranscribeExit {
  done = 0,          ///< also where no words were understood
  noRecogniser = 1,  ///< no model can be loaded
  unreadable = 3,    ///< there is no such file, or it cannot be read
  notWav = 4,        ///< something else than a WAV file, or one of an unknown kind
  empty = 5,         ///< a WAV file without samples
  unwritten = 6,     ///< the words did not get to standard output
};

/// Prints the words of the WAV file at `path` to `text`, and everything else to `notes`. Works on the
/// caller's thread until it is done.
TranscribeExit transcribeFile(const std::string& path, SpeechEngine& engine, Output& text,
                              Output& notes);

}  // namespace voxtrel::quillback
