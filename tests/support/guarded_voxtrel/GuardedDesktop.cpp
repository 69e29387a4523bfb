#include "support/guarded_voxtrel/GuardedDesktop.h"

#include <QDBusConnection>

#include "voxtrel/platform/linux/permissions/KeyboardNodes.h"

namespace voxtrel::testing {

GuardedDesktop::GuardedDesktop(std::unique_ptr<Desktop> real, const Places& places)
    : real_(std::move(real)) {
  if (places.sandboxMarker) {
    microphoneAccess_.emplace(real_->mainLoop(), real_->log(), QDBusConnection::sessionBus(),
                              *places.sandboxMarker);
  }
  if (places.inputFolder) {
    auto sources = SessionKeyTrust::sourcesOfThisSession();
    sources.canReadKeyboard = [folder = *places.inputFolder] {
      return canReadKeyboard(folder, [](int) { return true; });
    };
    trust_.emplace(std::move(sources), real_->notifications());
  }
}

AccessibilityTrust& GuardedDesktop::accessibilityTrust() {
  return trust_ ? *trust_ : real_->accessibilityTrust();
}

MicrophoneAccess& GuardedDesktop::microphoneAccess() {
  return microphoneAccess_ ? *microphoneAccess_ : real_->microphoneAccess();
}

}  // namespace voxtrel::testing
