#include "voxtrel/platform/linux/log/StandardErrorLog.h"

#include <unistd.h>

#include "voxtrel/platform/linux/log/LogLine.h"

namespace voxtrel {

void StandardErrorLog::write(LogLevel level, std::string_view category, std::string_view message) {
  if (!isEnabled(level)) return;
  const std::string line = logLine(level, category, message);
  [[maybe_unused]] const auto written = ::write(STDERR_FILENO, line.data(), line.size());
}

}  // namespace voxtrel
