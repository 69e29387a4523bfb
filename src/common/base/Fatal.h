#pragma once

#include <cstdint>

namespace voxtrel {

/// Aborts the process with a message, for a condition that no caller could handle.
[[noreturn]] void fatalError(const char* message);

/// A count that never wraps: incrementing the largest value is a fatal error.
/// Thread: one at a time.
class CheckedCounter {
 public:
  explicit CheckedCounter(std::int64_t value = 0) : value_(value) {}

  /// Adds one and returns the new value.
  std::int64_t increment();
  void reset() { value_ = 0; }
  std::int64_t value() const { return value_; }

 private:
  std::int64_t value_;
};

}  // namespace voxtrel
