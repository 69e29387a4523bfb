#pragma once

#import <Foundation/Foundation.h>
#import <os/log.h>

#include <string>

#include "voxtrel/platform/Log.h"

namespace voxtrel {

/// The unified log, one object for each category. Private parts stay hidden from readers of the
/// log, so the engine's lines may be written with the dictated words.
/// Thread: any.  Fails by: losing the message.
class OsLog final : public Log {
 public:
  explicit OsLog(const std::string& subsystem);

  bool isEnabled(LogLevel level) const override;
  bool keepsWords() const override { return true; }
  void write(LogLevel level, std::string_view category, std::string_view message) override;
  void writePrivate(LogLevel level, std::string_view category, std::string_view message,
                    std::string_view privatePart) override;

 private:
  os_log_t logFor(std::string_view category) const;

  const os_log_t main_;
  const os_log_t process_;
  const os_log_t audio_;
  const os_log_t ui_;
};

}  // namespace voxtrel
