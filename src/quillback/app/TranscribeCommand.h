#pragma once

#include <string>

namespace voxtrel::quillback {

/// `quillback transcribe FILE.wav`: prints the words on standard output, all else on standard error.
/// Returns the exit status.
int printTranscript(const std::string& file);

}  // namespace voxtrel::quillback
