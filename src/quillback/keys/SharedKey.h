#pragma once

#include <set>

#include "quillback/ports/KeyWatch.h"

namespace voxtrel::quillback {

/// The push-to-talk key where several sources report it: pressed while at least one of them holds it.
/// Thread: the loop's.
class SharedKey {
 public:
  explicit SharedKey(KeyWatch::Listener listener) : listener_(std::move(listener)) {}
  SharedKey(const SharedKey&) = delete;
  SharedKey& operator=(const SharedKey&) = delete;

  /// What one more source reports to; must not be called after this is gone. A source releases what it
  /// holds before it ends.
  [[nodiscard]] KeyWatch::Listener addSource();

 private:
  KeyWatch::Listener listener_;
  int nextSource_ = 0;
  std::set<int> holders_;
};

}  // namespace voxtrel::quillback
