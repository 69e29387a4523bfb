#pragma once

#include <string>

namespace voxtrel::quillback {

/// The user's home folder: $HOME, else what the system has on record; without a slash at its end.
std::string homeFolder();

}  // namespace voxtrel::quillback
