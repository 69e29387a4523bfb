#pragma once

#include <string_view>

namespace voxtrel::quillback {

/// The lines printed for the program that started the engine.
/// Thread: any; lines never mix.
class Output {
 public:
  virtual ~Output() = default;

  /// Writes `line` and a newline at once, in one piece. A newline inside it becomes a space.
  virtual void print(std::string_view line) = 0;
};

}  // namespace voxtrel::quillback
