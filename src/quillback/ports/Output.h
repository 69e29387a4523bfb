#pragma once

#include <string_view>

namespace voxtrel::quillback {

/// The lines that whoever started the engine reads.
/// Thread: any; lines never mix.
class Output {
 public:
  virtual ~Output() = default;

  /// Writes `line` and a line feed in one piece, at once. A newline inside it becomes a blank.
  virtual void print(std::string_view line) = 0;
};

}  // namespace voxtrel::quillback
