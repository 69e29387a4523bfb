#pragma once

#include <functional>
#include <memory>

#include "quillback/ports/Loop.h"

namespace voxtrel::quillback {

/// Runs `readable` on the loop's thread whenever `descriptor` can be read or has broken, for as long
/// as what it returns lives.
using WatchDescriptor = std::function<std::shared_ptr<void>(int descriptor, Loop::Task readable)>;

}  // namespace voxtrel::quillback
