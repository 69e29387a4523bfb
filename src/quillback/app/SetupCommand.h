#pragma once

#include <string>

namespace voxtrel::quillback {

/// `quillback setup --model MODEL`: makes the model ready in the store. Returns the exit status.
/// Thread: the main one, before any other is started.
int setUpModel(const std::string& model);

}  // namespace voxtrel::quillback
