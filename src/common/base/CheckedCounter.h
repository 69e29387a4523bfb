#pragma once

#include <cstdint>

namespace voxtrel {

/// A count that never wraps: one more than the largest value ends the process with a message.
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
