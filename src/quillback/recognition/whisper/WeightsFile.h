#pragma once

#include <string>

#include <tl/expected.hpp>

#include "quillback/recognition/Whisper.h"

namespace voxtrel::quillback {

/// Walks through a weights file without reading the weights: header, vocabulary and the bounds of every
/// tensor, up to the file's end. The library itself ends the process on some damaged files and loads
/// others that then never give a word.
/// Format: "ggml" in hexadecimal, sizes as 32-bit numbers, filters, vocabulary, tensors; all little-endian.
/// Fails by: half a sentence, such as "the file ends within its vocabulary".
tl::expected<void, std::string> checkWeights(const std::string& path,
                                             RecogniserOptions::Family family);

}  // namespace voxtrel::quillback
