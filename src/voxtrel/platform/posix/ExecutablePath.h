#pragma once

#include <string>

namespace voxtrel {

/// Absolute path of the running program's file, links followed; defined in the system's folder.
/// Fails by: empty text.
std::string executablePath();

}  // namespace voxtrel
