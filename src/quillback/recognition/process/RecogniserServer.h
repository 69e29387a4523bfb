#pragma once

#include "quillback/recognition/RecogniserBackend.h"

namespace voxtrel::quillback {

/// The recogniser's process: loads `backend` and answers the messages that arrive at `socket`, the
/// end of a socket pair that the process got as a standard stream, until the other end is closed.
/// Returns the exit status. The process is killed when the thread that started it ends, even while
/// the backend computes.
/// Thread: the main one, before any other is started.
int serveRecogniser(int socket, RecogniserBackend& backend);

}  // namespace voxtrel::quillback
