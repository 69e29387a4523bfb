#pragma once

#include <string>

namespace voxtrel {

class ApplicationBundle;

/// Path of the engine: "quillback" beside the application's executable, otherwise
/// "/usr/local/bin/quillback", whether or not anything is there.
std::string binaryPath(const ApplicationBundle& bundle);

/// Whether anything is at `path`; links are followed.
bool fileExists(const std::string& path);

}  // namespace voxtrel
