#import "voxtrel/platform/macos/log/OsLog.h"

namespace voxtrel {
namespace {

os_log_type_t typeOf(LogLevel level) {
  switch (level) {
    case LogLevel::debug:
      return OS_LOG_TYPE_DEBUG;
    case LogLevel::info:
      return OS_LOG_TYPE_INFO;
    case LogLevel::error:
      return OS_LOG_TYPE_ERROR;
  }
  return OS_LOG_TYPE_DEFAULT;
}

}  // namespace

OsLog::OsLog(const std::string& subsystem)
    : main_(os_log_create(subsystem.c_str(), "main")),
      process_(os_log_create(subsystem.c_str(), "process")),
      audio_(os_log_create(subsystem.c_str(), "audio")),
      ui_(os_log_create(subsystem.c_str(), "ui")) {}

bool OsLog::isEnabled(LogLevel level) const {
  return os_log_type_enabled(process_, typeOf(level));
}

os_log_t OsLog::logFor(std::string_view category) const {
  if (category == "process") return process_;
  if (category == "audio") return audio_;
  if (category == "ui") return ui_;
  return main_;
}

void OsLog::write(LogLevel level, std::string_view category, std::string_view message) {
  const std::string text(message);
  os_log_with_type(logFor(category), typeOf(level), "%{public}s", text.c_str());
}

void OsLog::writePrivate(LogLevel level, std::string_view category, std::string_view message,
                         std::string_view privatePart) {
  const std::string text(message);
  const std::string hidden(privatePart);
  os_log_with_type(logFor(category), typeOf(level), "%{public}s%{private}s", text.c_str(),
                   hidden.c_str());
}

}  // namespace voxtrel
