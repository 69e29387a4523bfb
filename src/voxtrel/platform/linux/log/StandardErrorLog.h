#pragma once

#include "voxtrel/platform/Log.h"

namespace voxtrel {

/// The log as lines on standard error, each written at once so that threads do not mix theirs.
/// Thread: any.  Fails by: losing the message.
class StandardErrorLog final : public Log {
 public:
  explicit StandardErrorLog(LogLevel lowest) : lowest_(lowest) {}

  bool isEnabled(LogLevel level) const override { return level >= lowest_; }
  void write(LogLevel level, std::string_view category, std::string_view message) override;

 private:
  const LogLevel lowest_;
};

}  // namespace voxtrel
