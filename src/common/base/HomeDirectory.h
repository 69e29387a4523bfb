#pragma once

#include <string>

namespace voxtrel {

/// The user's home directory without trailing separator: HOME if that is an absolute path, else the
/// user database's entry.
/// Thread: any, as long as none changes the environment.  Fails by: empty text.
std::string homeDirectory();

}  // namespace voxtrel
