#pragma once

#include <memory>
#include <string>

class QApplication;

namespace voxtrel {

/// Connects to the user's display and sets the application's names. `argc` and `argv` must outlive
/// the result. In a Wayland session that has an X server, connects to that: only there can a window
/// be positioned and kept above others.
/// Fails by: null after one line on standard error; if the display does not respond, the process
/// ends with status 1.
std::unique_ptr<QApplication> connectToDisplay(int& argc, char** argv, const std::string& version);

}  // namespace voxtrel
