#pragma once

#include <QByteArray>
#include <QDBusContext>
#include <QDBusObjectPath>
#include <QIcon>
#include <QImage>
#include <QList>
#include <QObject>
#include <QPoint>
#include <QString>
#include <QTimer>
#include <functional>
#include <tuple>
#include <utility>

#include "voxtrel/platform/linux/dbus/DBusStructure.h"

namespace voxtrel {

// The structures of org.kde.StatusNotifierItem, with their D-Bus signatures.

/// An image: (iiay). Each pixel is four bytes: alpha, red, green and blue, not premultiplied.
struct NotifierPixmap {
  int width = 0;
  int height = 0;
  QByteArray argb;
  static auto fields(auto& self) { return std::tie(self.width, self.height, self.argb); }
};

using NotifierPixmaps = QList<NotifierPixmap>;

/// The tool tip: (sa(iiay)ss).
struct NotifierToolTip {
  QString iconName;
  NotifierPixmaps iconPixmaps;
  QString title;
  QString text;
  static auto fields(auto& self) {
    return std::tie(self.iconName, self.iconPixmaps, self.title, self.text);
  }
};

NotifierPixmap notifierPixmap(const QImage& image);

/// The tray item on the session bus: org.kde.StatusNotifierItem, an icon that opens a menu. The other
/// methods of the interface do nothing.
/// Thread: the main thread.  Fails by: not appearing, where there is no session bus.
class StatusNotifierItem final : public QObject, protected QDBusContext {
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
  /// What a host asks for. `place`: where its icon is, if it says so.
  struct Clicks {
    /// The host has no use of its own for a click. It is told that there is no such action: some hosts
    /// then open the menu.
    std::function<void(QPoint place)> activated;
    std::function<void(QPoint place)> menuWanted;  ///< ours, because the host draws none
  };

  /// `menuPath`: object path of the menu on the same connection.
  StatusNotifierItem(const QString& menuPath, Clicks clicks);

  /// Makes it reachable for hosts under `busName`.
  void publish();
  /// The conventional form of name; not all hosts accept a connection's unique name.
  static QString busName();
  /// Hosts that read two icons at once may keep the older. So after icons that follow each other
  /// quickly, the last one is announced again.
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
  /// Drawn on the first request after each `setIcon`.
  const NotifierPixmaps& iconPixmap();
  QDBusObjectPath menu() const { return menu_; }

  // NOLINTBEGIN(readability-identifier-naming): named by the interface.
  Q_SCRIPTABLE void Activate(int x, int y);
  Q_SCRIPTABLE void SecondaryActivate(int, int) {}
  Q_SCRIPTABLE void ContextMenu(int x, int y) { clicks_.menuWanted({x, y}); }
  Q_SCRIPTABLE void Scroll(int, const QString&) {}
  Q_SCRIPTABLE void ProvideXdgActivationToken(const QString&) {}

  Q_SIGNAL Q_SCRIPTABLE void NewTitle();
  Q_SIGNAL Q_SCRIPTABLE void NewIcon();
  Q_SIGNAL Q_SCRIPTABLE void NewAttentionIcon();
  Q_SIGNAL Q_SCRIPTABLE void NewOverlayIcon();
  Q_SIGNAL Q_SCRIPTABLE void NewToolTip();
  Q_SIGNAL Q_SCRIPTABLE void NewStatus(const QString& status);
  // NOLINTEND(readability-identifier-naming)

 private:
  const QDBusObjectPath menu_;
  const Clicks clicks_;
  QTimer quiet_;  ///< runs for a moment after each icon
  bool isAnnouncedAgain_ = false;
  QIcon icon_;
  NotifierPixmaps pixmaps_;  ///< empty until requested
};

}  // namespace voxtrel
