#pragma once

#include <QDBusMessage>
#include <QObject>
#include <memory>

#include "voxtrel/platform/linux/x11/XTheme.h"

namespace voxtrel {

/// Light or dark windows, as the desktop wants them: its portal says so, or the theme's name, which
/// ends in "-dark", where no portal has a say. Where Qt knows the desktop's own colours, or
/// another style than its own plain one draws, those are left alone.
/// Thread: the main thread.
/// Fails by: staying light.
class DesktopColors final : public QObject {
  Q_OBJECT

 public:
  /// To be called before a window is made. The first time it asks the desktop, without waiting for
  /// the answer, and it hears of changes from then on.
  void follow();

 private:
  Q_SLOT void onSettingChanged(const QDBusMessage& signal);
  void listen();
  void askPortal();
  void hear(const QVariant& colorScheme);
  void apply();

  enum class Wish { none, dark, light };

  bool isFollowing_ = false;
  bool isDark_ = false;
  Wish portalsWish_ = Wish::none;
  std::unique_ptr<XTheme> theme_;
};

}  // namespace voxtrel
