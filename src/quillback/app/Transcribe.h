#pragma once

#include <string>

#include "quillback/ports/Output.h"
#include "quillback/recognition/RecogniserBackend.h"

namespace voxtrel::quillback {

/// The exit status of `quillback transcribe` (2 means wrong use).
enum class TranscribeExit {
  done = 0,          ///< also if no words were recognised
  noRecogniser = 1,  ///< no model could be loaded
  unreadable = 3,    ///< the file is missing or cannot be read
  notWav = 4,        ///< not a WAV file, or one of an unknown kind
  empty = 5,         ///< a WAV file without samples
  unwritten = 6,     ///< the words could not be written to standard output
};

/// Prints the words in the WAV file at `path` to `text`, and everything else to `notes`.
/// Thread: any, which it blocks.
TranscribeExit transcribeFile(const std::string& path, RecogniserBackend& backend, Output& text,
                              Output& notes);

}  // namespace voxtrel::quillback
