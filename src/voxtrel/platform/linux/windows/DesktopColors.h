#pragma once

#include <QDBusMessage>
#include <QObject>
#include <QPalette>
#include <memory>

#include "voxtrel/platform/linux/x11/XTheme.h"

namespace voxtrel {

/// The palette for windows on a dark desktop.
QPalette darkPalette();

/// Makes the windows light or dark, as the desktop wants: by its portal or, if that has no preference,
/// by a theme name that ends in "-dark". Does nothing if Qt knows the desktop's colours or draws with
/// another style than its plain one.
/// Thread: the main thread.
/// Fails by: staying light.
class DesktopColors final : public QObject {
  Q_OBJECT

 public:
  /// Call before making a window. The first call asks the desktop without blocking and then follows
  /// its changes.
  void follow();

 private:
  enum class Preference { none, dark, light };

  Q_SLOT void onSettingChanged(const QDBusMessage& signal);
  void listen();
  void askPortal();
  void setColorScheme(const QVariant& colorScheme);
  void apply();

  bool isFollowing_ = false;
  bool isDark_ = false;
  Preference preference_ = Preference::none;
  std::unique_ptr<XTheme> theme_;
};

}  // namespace voxtrel
