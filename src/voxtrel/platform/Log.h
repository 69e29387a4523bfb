#pragma once

#include <string_view>

namespace voxtrel {

enum class LogLevel { debug, info, error };

/// The platform's log, under the application's identifier.
/// Thread: any.
class Log {
 public:
  virtual ~Log() = default;

  /// Whether messages of `level` are kept; ask before building an expensive one.
  virtual bool isEnabled(LogLevel level) const = 0;

  /// Whether the user has asked for dictated words in the log.
  virtual bool keepsWords() const { return false; }

  /// `category` names the subsystem: "process", "main", "audio" or "ui".
  virtual void write(LogLevel level, std::string_view category, std::string_view message) = 0;
};

/// The log with one source unit's category.
/// Thread: any.  Borrows: Log.
class Logger {
 public:
  Logger(Log& log, std::string_view category) : log_(log), category_(category) {}

  void info(std::string_view message) const { log_.write(LogLevel::info, category_, message); }
  void error(std::string_view message) const { log_.write(LogLevel::error, category_, message); }
  void debug(std::string_view message) const { log_.write(LogLevel::debug, category_, message); }
  bool isDebugEnabled() const { return log_.isEnabled(LogLevel::debug); }
  bool keepsWords() const { return log_.keepsWords(); }

 private:
  Log& log_;
  std::string_view category_;
};

}  // namespace voxtrel
