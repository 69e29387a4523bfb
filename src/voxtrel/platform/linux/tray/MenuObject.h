#pragma once

#include <QDBusContext>
#include <QDBusVariant>
#include <QObject>
#include <functional>
#include <set>
#include <utility>

#include "voxtrel/platform/linux/tray/MenuLayout.h"

namespace voxtrel {

/// The menu on the session bus: com.canonical.dbusmenu, from which a tray host draws it. Actions run
/// after the host got its reply; a row that is clicked again before its action begins runs it once.
/// Thread: the main thread.  Owns: the rows.  Fails by: an error reply to a host's wrong call.
class MenuObject final : public QObject, protected QDBusContext {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "com.canonical.dbusmenu")
  Q_PROPERTY(uint Version READ version)
  Q_PROPERTY(QString TextDirection READ textDirection)
  Q_PROPERTY(QString Status READ status)
  Q_PROPERTY(QStringList IconThemePath READ iconThemePath)

 public:
  static constexpr const char* kPath = "/MenuBar";

  MenuObject();

  /// Called when a host is about to show the menu, or has done so.
  void setOnShown(std::function<void()> onShown) { onShown_ = std::move(onShown); }
  /// Makes it reachable for hosts.
  void publish();
  void setRows(std::vector<MenuItem> rows);
  /// Returns whether this changed anything; only then hosts get a signal.
  bool setTitle(std::size_t row, const std::string& title);
  const std::vector<MenuItem>& rows() const { return layout_.rows(); }

  static uint version() { return 3; }
  static QString textDirection();
  static QString status() { return "normal"; }
  static QStringList iconThemePath() { return {}; }

  // NOLINTBEGIN(readability-identifier-naming): named by the interface, types in full for the bus.
  Q_SCRIPTABLE uint GetLayout(int parentId, int recursionDepth, const QStringList& propertyNames,
                              voxtrel::MenuNode& layout);
  Q_SCRIPTABLE QList<voxtrel::MenuRowProperties> GetGroupProperties(
      const QList<int>& ids, const QStringList& propertyNames);
  Q_SCRIPTABLE QDBusVariant GetProperty(int id, const QString& name);
  Q_SCRIPTABLE void Event(int id, const QString& eventId, const QDBusVariant& data, uint timestamp);
  /// Returns the unknown ids, as the functions below do.
  Q_SCRIPTABLE QList<int> EventGroup(const QList<voxtrel::MenuEvent>& events);
  Q_SCRIPTABLE bool AboutToShow(int id);
  Q_SCRIPTABLE QList<int> AboutToShowGroup(const QList<int>& ids, QList<int>& idErrors);

  Q_SIGNAL Q_SCRIPTABLE void ItemsPropertiesUpdated(
      const QList<voxtrel::MenuRowProperties>& updatedProps,
      const QList<voxtrel::MenuRowRemovals>& removedProps);
  Q_SIGNAL Q_SCRIPTABLE void LayoutUpdated(uint revision, int parent);
  // NOLINTEND(readability-identifier-naming)

 private:
  Q_SIGNAL void chosen(int id);
  void runAction(int id);
  bool handleEvent(int id, const QString& type);
  void noteShown(int id);
  bool known(int id);
  void refuse(const QString& reason);

  std::function<void()> onShown_;
  MenuLayout layout_;
  std::set<int> waiting_;  ///< chosen rows whose action has not begun
  uint revision_ = 1;
};

}  // namespace voxtrel
