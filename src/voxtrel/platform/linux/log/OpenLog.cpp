#include "voxtrel/platform/linux/log/OpenLog.h"

#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#define SD_JOURNAL_SUPPRESS_LOCATION  // it would always name this file
#include <systemd/sd-journal.h>

#include <array>
#include <cstdlib>

#include "voxtrel/platform/linux/log/LogFormat.h"

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

void JournalLog::write(LogLevel level, std::string_view category, std::string_view message) {
  if (!isEnabled(level)) return;
  auto fields = journalFields(level, category, message);
  std::array<iovec, fields.size()> parts{};
  for (std::size_t i = 0; i < fields.size(); ++i) parts[i] = {fields[i].data(), fields[i].size()};
  sd_journal_sendv(parts.data(), static_cast<int>(parts.size()));
}

void StandardErrorLog::write(LogLevel level, std::string_view category, std::string_view message) {
  if (!isEnabled(level)) return;
  const std::string line = logLine(level, category, message);
  [[maybe_unused]] const auto written = ::write(STDERR_FILENO, line.data(), line.size());
}

LogVerbosity LogVerbosity::parse(const char* value) {
  const std::string_view wanted = value == nullptr ? "" : value;
  if (wanted == "debug") return {LogLevel::debug, std::nullopt};
  if (wanted.empty() || wanted == "info") return {};
  return {LogLevel::info, R"(VOXTREL_LOG has the unknown value ")" + std::string(wanted) +
                              R"("; known are "debug" and "info")"};
}

bool namesStream(const char* value, unsigned long long device, unsigned long long inode) {
  return value != nullptr && value == std::to_string(device) + ":" + std::to_string(inode);
}

}  // namespace voxtrel
