#pragma once

#include <string>
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

  /// A message that ends with `privatePart`, such as a path or what the engine printed. Only a
  /// platform whose log can hide it from others treats it in another way.
  virtual void writePrivate(LogLevel level, std::string_view category, std::string_view message,
                            std::string_view privatePart) {
    write(level, category, std::string(message).append(privatePart));
  }
};

/// The log with one source unit's category.
/// Thread: any.  Borrows: Log.
class Logger {
 public:
  Logger(Log& log, std::string_view category) : log_(log), category_(category) {}

  void info(std::string_view message) const { log_.write(LogLevel::info, category_, message); }
  void error(std::string_view message) const { log_.write(LogLevel::error, category_, message); }
  void errorWithPrivate(std::string_view message, std::string_view privatePart) const {
    log_.writePrivate(LogLevel::error, category_, message, privatePart);
  }
  void debugPrivate(std::string_view message) const {
    log_.writePrivate(LogLevel::debug, category_, "", message);
  }
  bool isDebugEnabled() const { return log_.isEnabled(LogLevel::debug); }
  bool keepsWords() const { return log_.keepsWords(); }

 private:
  Log& log_;
  std::string_view category_;
};

}  // namespace voxtrel
