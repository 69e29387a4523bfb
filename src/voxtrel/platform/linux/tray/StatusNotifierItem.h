#pragma once

#include <QDBusObjectPath>
#include <QIcon>
#include <QObject>

#include "voxtrel/platform/linux/tray/NotifierMessages.h"

namespace voxtrel {

/// The tray item on the session bus: org.kde.StatusNotifierItem, an icon that opens a menu. What
/// else hosts can ask of it is answered and does nothing.
/// Thread: the main thread.  Fails by: not being on the bus, where there is none.
class StatusNotifierItem final : public QObject {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierItem")
  Q_PROPERTY(QString Category READ category)
  Q_PROPERTY(QString Id READ title)
  Q_PROPERTY(QString Title READ title)
  Q_PROPERTY(QString Status READ status)
  Q_PROPERTY(int WindowId READ windowId)
  Q_PROPERTY(QString IconThemePath READ none)
  Q_PROPERTY(QString IconName READ iconName)
  Q_PROPERTY(voxtrel::NotifierPixmaps IconPixmap READ iconPixmap)
  Q_PROPERTY(QString OverlayIconName READ none)
  Q_PROPERTY(voxtrel::NotifierPixmaps OverlayIconPixmap READ noPixmap)
  Q_PROPERTY(QString AttentionIconName READ none)
  Q_PROPERTY(voxtrel::NotifierPixmaps AttentionIconPixmap READ noPixmap)
  Q_PROPERTY(QString AttentionMovieName READ none)
  Q_PROPERTY(voxtrel::NotifierToolTip ToolTip READ toolTip)
  Q_PROPERTY(bool ItemIsMenu READ itemIsMenu)
  Q_PROPERTY(QDBusObjectPath Menu READ menu)

 public:
  /// `menuPath`: where the same connection has the menu.
  explicit StatusNotifierItem(const QString& menuPath);

  /// Hosts reach it from now on, by `busName`.
  void publish();
  /// A name of the kind that every host knows; not all of them take a connection's own.
  static QString busName();
  void setIcon(const QIcon& icon);

  static QString category() { return "ApplicationStatus"; }
  static QString title() { return "Voxtrel"; }
  static QString status() { return "Active"; }
  static int windowId() { return 0; }
  static QString none() { return {}; }
  static NotifierPixmaps noPixmap() { return {}; }
  static NotifierToolTip toolTip() { return {{}, {}, title(), {}}; }
  static bool itemIsMenu() { return true; }
  QString iconName() const { return icon_.name(); }
  /// Drawn only for hosts that ask, once for each icon.
  const NotifierPixmaps& iconPixmap();
  QDBusObjectPath menu() const { return menu_; }

  // NOLINTBEGIN(readability-identifier-naming): named by the interface.
  Q_SCRIPTABLE void Activate(int, int) {}
  Q_SCRIPTABLE void SecondaryActivate(int, int) {}
  Q_SCRIPTABLE void ContextMenu(int, int) {}
  Q_SCRIPTABLE void Scroll(int, const QString&) {}

  Q_SIGNAL Q_SCRIPTABLE void NewTitle();
  Q_SIGNAL Q_SCRIPTABLE void NewIcon();
  Q_SIGNAL Q_SCRIPTABLE void NewAttentionIcon();
  Q_SIGNAL Q_SCRIPTABLE void NewOverlayIcon();
  Q_SIGNAL Q_SCRIPTABLE void NewToolTip();
  Q_SIGNAL Q_SCRIPTABLE void NewStatus(const QString& status);
  // NOLINTEND(readability-identifier-naming)

 private:
  const QDBusObjectPath menu_;
  QIcon icon_;
  NotifierPixmaps pixmaps_;  ///< empty until somebody asks
};

}  // namespace voxtrel
