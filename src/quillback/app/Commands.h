#pragma once

#include "quillback/app/CommandLine.h"

namespace voxtrel::quillback {

/// The exit status of every command when memory runs out.
inline constexpr int kNoMemoryExit = 12;

/// Does what the command line asks for and returns the exit status. `run` returns when a signal ends it or
/// its parent is gone; `transcribe` and `retry` print the words to standard output, all else to standard
/// error.
/// Thread: the main one, before any other is started.
int runCommand(const CommandLine& line);

}  // namespace voxtrel::quillback
