#pragma once

#include <string>

namespace voxtrel {

class ApplicationBundle;

/// Path of the engine: "quillback" beside the application's executable, otherwise
/// "/usr/local/bin/quillback". Does not check that a file is there.
std::string binaryPath(const ApplicationBundle& bundle);

/// Whether a file or folder is at `path`; links are followed.
bool fileExists(const std::string& path);

}  // namespace voxtrel
