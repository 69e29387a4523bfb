#pragma once

#include <QAbstractNativeEventFilter>
#include <cstdint>
#include <functional>

namespace voxtrel {

/// Whether some program is the X screen's tray in the older way, by owning a selection.
/// Thread: the main thread. It waits for the X server.
bool hasXEmbedTray();

/// Tells when a program takes on a role on the X screen, of which the tray is one.
/// Thread: the main thread.  Fails by: silence where the display is not X.
class XManagerWatch final : public QAbstractNativeEventFilter {
 public:
  /// `onAppeared` is called in the midst of X events: it must not end this.
  explicit XManagerWatch(std::function<void()> onAppeared);

  bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

 private:
  std::function<void()> onAppeared_;
  std::uint32_t managerAtom_ = 0;  ///< none
};

}  // namespace voxtrel
