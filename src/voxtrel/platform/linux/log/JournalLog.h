#pragma once

#include <array>
#include <string>
#include <string_view>

#include "voxtrel/platform/Log.h"

namespace voxtrel {

/// A message as the journal stores it, each field as its name, "=" and its value.
std::array<std::string, 4> journalFields(LogLevel level, std::string_view category,
                                         std::string_view message);

/// The log in the system's journal, with the fields SUBSYSTEM (the application's identifier) and
/// CATEGORY.
/// Thread: any.  Fails by: losing the message.
class JournalLog final : public Log {
 public:
  explicit JournalLog(LogLevel lowest) : lowest_(lowest) {}

  bool isEnabled(LogLevel level) const override { return level >= lowest_; }
  void write(LogLevel level, std::string_view category, std::string_view message) override;

 private:
  const LogLevel lowest_;
};

}  // namespace voxtrel
