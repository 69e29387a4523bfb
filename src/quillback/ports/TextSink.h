#pragma once

#include <string>

namespace voxtrel::quillback {

/// Where the words go.
/// Thread: the loop's.
class TextSink {
 public:
  virtual ~TextSink() = default;

  /// Hands one dictation's text over. A blank goes before it where it follows another dictation in
  /// the same window.
  /// Fails by: one line of output that says so.
  virtual void insert(const std::string& text) = 0;
};

}  // namespace voxtrel::quillback
