#include "voxtrel/platform/linux/log/JournalLog.h"

#include <sys/uio.h>
#include <syslog.h>

#define SD_JOURNAL_SUPPRESS_LOCATION  // of this file, which tells nothing
#include <systemd/sd-journal.h>

#include "voxtrel/platform/Desktop.h"

namespace voxtrel {

namespace {

int priorityOf(LogLevel level) {
  switch (level) {
    case LogLevel::debug:
      return LOG_DEBUG;
    case LogLevel::info:
      return LOG_INFO;
    case LogLevel::error:
      return LOG_ERR;
  }
  return LOG_INFO;
}

std::string field(std::string_view name, std::string_view value) {
  std::string text(name);
  text += '=';
  text += value;
  return text;
}

}  // namespace

std::array<std::string, 4> journalFields(LogLevel level, std::string_view category,
                                         std::string_view message) {
  return {field("MESSAGE", message), field("PRIORITY", std::to_string(priorityOf(level))),
          field("SUBSYSTEM", kBundleIdentifier), field("CATEGORY", category)};
}

void JournalLog::write(LogLevel level, std::string_view category, std::string_view message) {
  if (!isEnabled(level)) return;
  auto fields = journalFields(level, category, message);
  std::array<iovec, fields.size()> parts{};
  for (std::size_t i = 0; i < fields.size(); ++i) parts[i] = {fields[i].data(), fields[i].size()};
  sd_journal_sendv(parts.data(), static_cast<int>(parts.size()));
}

}  // namespace voxtrel
