#include "voxtrel/platform/linux/log/OpenLog.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

#include "voxtrel/platform/linux/log/JournalLog.h"
#include "voxtrel/platform/linux/log/LogLine.h"
#include "voxtrel/platform/linux/log/StandardErrorLog.h"

namespace voxtrel {

namespace {

bool goesToJournal() {
  struct stat status {};
  return fstat(STDERR_FILENO, &status) == 0 &&
         namesStream(std::getenv("JOURNAL_STREAM"), status.st_dev, status.st_ino);
}

}  // namespace

std::unique_ptr<Log> openLog() {
  const LogVerbosity verbosity = LogVerbosity::parse(std::getenv("VOXTREL_LOG"));
  std::unique_ptr<Log> log;
  if (goesToJournal()) {
    log = std::make_unique<JournalLog>(verbosity.lowest);
  } else {
    log = std::make_unique<StandardErrorLog>(verbosity.lowest);
  }
  if (verbosity.complaint) log->write(LogLevel::error, "main", *verbosity.complaint);
  return log;
}

}  // namespace voxtrel
