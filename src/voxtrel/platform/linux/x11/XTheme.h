#pragma once

#include <QAbstractNativeEventFilter>
#include <QByteArray>
#include <QByteArrayView>
#include <functional>
#include <memory>
#include <optional>

#include "common/x11/XConnection.h"

namespace voxtrel {

/// The text setting `name` in the data an XSETTINGS manager publishes. Empty if it is missing, is not
/// a text, or the data is malformed.
std::optional<QByteArray> xSettingsText(QByteArrayView data, QByteArrayView name);

/// The theme that the desktop sets for X programs, such as "Adwaita-dark".
/// Thread: the main thread.  Borrows: Qt's connection to the X server.
/// Fails by: an empty name, also without an X server.
class XTheme final : public QAbstractNativeEventFilter {
 public:
  /// `onChange` is called after the desktop's settings have changed.
  explicit XTheme(std::function<void()> onChange);

  /// Blocks for two round trips.
  QByteArray name() const;

  bool nativeEventFilter(const QByteArray& type, void* message, qintptr* result) override;

 private:
  const std::function<void()> onChange_;
  const std::unique_ptr<XConnection> server_;
  xcb_atom_t selection_ = XCB_ATOM_NONE;
  xcb_atom_t settings_ = XCB_ATOM_NONE;
};

}  // namespace voxtrel
