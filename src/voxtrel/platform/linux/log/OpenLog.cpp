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
    log = std::make_unique<JournalLog>(verbosity.lowest, verbosity.keepsWords);
  } else {
    log = std::make_unique<StandardErrorLog>(verbosity.lowest, verbosity.keepsWords);
  }
  if (verbosity.complaint) log->write(LogLevel::error, "main", *verbosity.complaint);
  log->write(
      LogLevel::debug, "main",
      verbosity.keepsWords
          ? "The engine's lines are logged, with the dictated words"
          : "The engine's lines are logged; VOXTREL_LOG=debug,words adds the dictated words");
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
  if (wanted == "debug") return {.lowest = LogLevel::debug};
  if (wanted == "debug,words") return {.lowest = LogLevel::debug, .keepsWords = true};
  if (wanted.empty() || wanted == "info") return {};
  return {.complaint = R"(VOXTREL_LOG has the unknown value ")" + std::string(wanted) +
                       R"("; known are "info", "debug" and "debug,words")"};
}

bool namesStream(const char* value, unsigned long long device, unsigned long long inode) {
  return value != nullptr && value == std::to_string(device) + ":" + std::to_string(inode);
}

}  // namespace voxtrel
