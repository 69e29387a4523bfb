#pragma once

#include <functional>
#include <string>
#include <vector>

#include "quillback/audio/TakeFolder.h"
#include "quillback/ports/Output.h"
#include "quillback/recognition/RecogniserBackend.h"

namespace voxtrel::quillback {

/// The exit status of `quillback transcribe` and `quillback retry` (2 means wrong use).
enum class TranscribeExit {
  done = 0,          ///< also if no words were recognised
  noRecogniser = 1,  ///< no model could be loaded
  unreadable = 3,    ///< the file is missing or cannot be read
  notWav = 4,        ///< not a WAV file, or one of an unknown kind
  empty = 5,         ///< a WAV file without samples; nothing to retry
  unwritten = 6,     ///< the words could not be written to standard output
  tooLong = 7,       ///< more than SoundFile::kMaxLength
};

/// Prints the words in the WAV file at `path` to `text`, and everything else to `notes`. Memory does not grow
/// with the file: it is recognised in takes of at most five minutes, while it is read.
/// Thread: any, which it blocks.
TranscribeExit transcribeFile(const std::string& path, RecogniserBackend& backend, Output& text,
                              Output& notes);

/// Recognises the kept recordings in this order and removes each whose words were delivered; one that
/// gives no words stays until the next recording. `deliver` returns false if the words could not be
/// written, which ends it. A file without sound is removed, one that cannot be read
/// or is too long stays. The status is that of the first failure.
/// Thread: any, which it blocks.
TranscribeExit retryTakes(const std::vector<StoredTake>& takes, RecogniserBackend& backend,
                          const std::function<bool(const std::string& words)>& deliver,
                          Output& notes);

}  // namespace voxtrel::quillback
