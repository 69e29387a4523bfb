#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "voxtrel/platform/Log.h"

namespace voxtrel {

/// The log of this run: the journal if standard error goes there, else standard error.
std::unique_ptr<Log> openLog();

/// A log that keeps what it was asked to keep.
/// Thread: any.
class ChosenLog : public Log {
 public:
  explicit ChosenLog(LogLevel lowest, bool keepsWords = false)
      : lowest_(lowest), keepsWords_(keepsWords) {}

  bool isEnabled(LogLevel level) const override { return level >= lowest_; }
  bool keepsWords() const override { return keepsWords_; }

 private:
  const LogLevel lowest_;
  const bool keepsWords_;
};

/// Writes to the system's journal.
/// Thread: any.  Fails by: losing the message.
class JournalLog final : public ChosenLog {
 public:
  using ChosenLog::ChosenLog;
  void write(LogLevel level, std::string_view category, std::string_view message) override;
};

/// Writes lines to standard error, each in one call so that those of several threads do not mix.
/// Thread: any.  Fails by: losing the message.
class StandardErrorLog final : public ChosenLog {
 public:
  using ChosenLog::ChosenLog;
  void write(LogLevel level, std::string_view category, std::string_view message) override;
};

/// What the environment variable VOXTREL_LOG asks for.
struct LogVerbosity {
  LogLevel lowest = LogLevel::info;
  bool keepsWords = false;                              ///< dictated words are logged
  std::optional<std::string> complaint = std::nullopt;  ///< about an unknown value

  /// `value`: null if the variable is not set.
  static LogVerbosity parse(const char* value);
};

/// Whether JOURNAL_STREAM (`value`, null if not set) names this device and inode. If it names those
/// of standard error, standard error goes to the journal.
bool namesStream(const char* value, unsigned long long device, unsigned long long inode);

}  // namespace voxtrel
