#pragma once

#include <QDBusVariant>
#include <QObject>
#include <optional>

namespace voxtrel {

/// Light or dark windows, as the desktop's portal says. Where Qt knows the desktop's own colours, or
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
  Q_SLOT void onSettingChanged(const QString& space, const QString& key, const QDBusVariant& value);
  void listen();
  void askPortal();
  void setDark(bool isDark);

  bool isFollowing_ = false;
  bool isDark_ = false;
};

}  // namespace voxtrel
