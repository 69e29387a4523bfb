#pragma once

#include <xcb/xcb.h>

#include <QAbstractNativeEventFilter>
#include <QByteArray>
#include <functional>

#include "voxtrel/platform/linux/x11/XcbConnection.h"

namespace voxtrel {

/// The theme that the desktop tells X programs to use, such as "Adwaita-dark".
/// Thread: the main thread.  Borrows: Qt's connection to the X server.
/// Fails by: an empty name, also where there is no X server.
class XThemeName final : public QAbstractNativeEventFilter {
 public:
  /// `onChange` is called after the desktop's settings have changed.
  explicit XThemeName(std::function<void()> onChange);
  ~XThemeName() override;

  /// Waits for the server twice.
  QByteArray read();

  bool nativeEventFilter(const QByteArray& type, void* message, qintptr* result) override;

 private:
  const std::function<void()> onChange_;
  XcbConnection x_;
  xcb_atom_t selection_ = XCB_ATOM_NONE;
  xcb_atom_t settings_ = XCB_ATOM_NONE;
};

}  // namespace voxtrel
