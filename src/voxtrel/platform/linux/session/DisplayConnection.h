#pragma once

#include <memory>
#include <string>

class QApplication;

namespace voxtrel {

/// Connects to the user's display and sets the application's names. `argc` and `argv` must outlive
/// the result. Where an X server serves a Wayland session, it is preferred: only there can a window
/// be placed and kept above others.
/// Fails by: null after one line on standard error; a display that does not answer ends the process
/// with status 1.
std::unique_ptr<QApplication> connectToDisplay(int& argc, char** argv, const std::string& version);

}  // namespace voxtrel
