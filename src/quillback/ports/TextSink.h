#pragma once

#include <string>

namespace voxtrel::quillback {

/// Where the recognised words go.
/// Thread: the loop's.
class TextSink {
 public:
  virtual ~TextSink() = default;

  /// Inserts the text of one dictation, after a space if it follows another dictation in the same
  /// window.
  /// Fails by: one line of output.
  virtual void insert(const std::string& text) = 0;
};

}  // namespace voxtrel::quillback
