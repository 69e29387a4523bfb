#include "voxtrel/platform/macos/sound/TapGate.h"

#include <utility>

namespace voxtrel {

TapGate::TapGate(MicrophoneTapOptions options) : options_(std::move(options)) {}

void TapGate::pass(const AudioBuffer& buffer) {
  if (!enter(false)) return;
  if (options_.onBuffer) options_.onBuffer(buffer);
  leave();
}

void TapGate::fail(std::string description) {
  if (!enter(true)) return;
  if (options_.onFailure) options_.onFailure(std::move(description));
  leave();
}

void TapGate::close() {
  std::unique_lock guard(lock_);
  isClosed_ = true;
  left_.wait(guard, [this] { return inside_ == 0; });
}

bool TapGate::enter(bool isFailure) {
  const std::lock_guard guard(lock_);
  if (isClosed_ || hasFailed_) return false;
  hasFailed_ = isFailure;
  ++inside_;
  return true;
}

void TapGate::leave() {
  const std::lock_guard guard(lock_);
  --inside_;
  left_.notify_all();
}

}  // namespace voxtrel
