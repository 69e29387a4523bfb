#pragma once

#include <memory>

namespace voxtrel {

class Log;

/// The log of this run: the journal where standard error goes there, else standard error.
std::unique_ptr<Log> openLog();

}  // namespace voxtrel
