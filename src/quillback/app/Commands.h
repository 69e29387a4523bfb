#pragma once

#include "quillback/app/CommandLine.h"

namespace voxtrel::quillback {

/// Does what the command line asks for and returns the exit status. `run` returns when a signal ends it or
/// its parent is gone; `transcribe` and `retry` print the words to standard output, all else to standard
/// error.
/// Thread: the main one, before any other is started.
int runCommand(const CommandLine& line);

}  // namespace voxtrel::quillback
