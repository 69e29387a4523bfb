#include "quillback/keys/OwnKeys.h"

#include <algorithm>

namespace voxtrel::quillback {
namespace {

/// The server reports an event within milliseconds.
constexpr std::chrono::milliseconds kLifetime{500};

}  // namespace

void OwnKeys::forgetOld() {
  const auto oldest = loop_.now() - kLifetime;
  while (!events_.empty() && events_.front().at < oldest) events_.pop_front();
}

void OwnKeys::sent(int code, bool isDown) {
  forgetOld();
  events_.push_back({code, isDown, loop_.now()});
}

bool OwnKeys::claim(int code, bool isDown) {
  forgetOld();
  const auto found = std::find_if(events_.begin(), events_.end(), [&](const Event& event) {
    return event.code == code && event.isDown == isDown;
  });
  if (found == events_.end()) return false;
  events_.erase(found);
  return true;
}

}  // namespace voxtrel::quillback
