#pragma once

namespace voxtrel::quillback {

/// `quillback run`: waits for the key and turns speech into text until it is told to end, or until
/// its parent is gone. Returns the exit status.
/// Thread: the main one, before any other is started.
int runEngine();

}  // namespace voxtrel::quillback
