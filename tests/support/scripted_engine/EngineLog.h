#pragma once

#include <string>
#include <string_view>

namespace scripted {

/// A file beside the engine that says what happened when; every entry is one line "SECONDS PID
/// TEXT" in monotonic time. No descriptor is held. Thread: any.
class EngineLog {
 public:
  explicit EngineLog(std::string path) : path_(std::move(path)) {}

  /// Adds an entry, making the file where it is missing.
  void write(std::string_view text) const;

  /// Adds an entry if the file is there.
  void note(std::string_view text) const;

 private:
  void append(std::string_view text, int flags) const;

  const std::string path_;
};

}  // namespace scripted
