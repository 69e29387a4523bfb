#pragma once

#include <string>

namespace voxtrel::quillback {

/// Where people paste from.
/// Thread: the loop's.
class Clipboard {
 public:
  virtual ~Clipboard() = default;

  /// Replaces what is there.
  virtual void put(const std::string& text) = 0;
};

}  // namespace voxtrel::quillback
