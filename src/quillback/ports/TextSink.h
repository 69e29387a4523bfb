#pragma once

#include <functional>
#include <string>

namespace voxtrel::quillback {

/// Where the recognised words go.
/// Thread: the loop's.
class TextSink {
 public:
  virtual ~TextSink() = default;

  using OnInserted = std::function<void()>;

  /// Inserts the text of one dictation, after a space if it follows another dictation in the same
  /// window. Calls `onInserted` once all of it was inserted or copied, maybe before this returns. If this
  /// is destroyed before, it is not called: a part of the text may be lost.
  /// Fails by: one line of output.
  virtual void insert(const std::string& text, OnInserted onInserted) = 0;
};

}  // namespace voxtrel::quillback
