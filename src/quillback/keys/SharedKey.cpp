#include "quillback/keys/SharedKey.h"

namespace voxtrel::quillback {

KeyWatch::Listener SharedKey::addSource() {
  const int source = nextSource_++;
  KeyWatch::Listener reports;
  reports.onPressed = [this, source] {
    const bool isFirst = holders_.empty();
    if (holders_.insert(source).second && isFirst) listener_.onPressed();
  };
  reports.onReleased = [this, source] {
    if (holders_.erase(source) > 0 && holders_.empty()) listener_.onReleased();
  };
  reports.onCancelled = [this, source] {
    if (holders_.contains(source)) listener_.onCancelled();
  };
  return reports;
}

}  // namespace voxtrel::quillback
