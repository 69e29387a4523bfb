#pragma once

#include <QDBusVariant>
#include <QList>
#include <QStringList>
#include <QVariantMap>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "voxtrel/platform/StatusItem.h"
#include "voxtrel/platform/linux/dbus/DBusStructure.h"

namespace voxtrel {

// The structures of com.canonical.dbusmenu, with their D-Bus signatures.

/// A row and the rows below it: (ia{sv}av), each child a MenuNode.
struct MenuNode {
  int id = 0;
  QVariantMap properties;
  QVariantList children;
  static auto fields(auto& self) { return std::tie(self.id, self.properties, self.children); }
};

/// Properties of one row: (ia{sv}).
struct MenuRowProperties {
  int id = 0;
  QVariantMap properties;
  static auto fields(auto& self) { return std::tie(self.id, self.properties); }
};

/// Names of properties that a row no longer has: (ias).
struct MenuRowRemovals {
  int id = 0;
  QStringList names;
  static auto fields(auto& self) { return std::tie(self.id, self.names); }
};

/// What the user did to a row: (isvu).
struct MenuEvent {
  int id = 0;
  QString type;
  QDBusVariant data;
  uint timestamp = 0;
  static auto fields(auto& self) { return std::tie(self.id, self.type, self.data, self.timestamp); }
};

/// Alternative key combinations, each a list of key names: aas.
using MenuShortcut = QList<QStringList>;

/// Registers these types with Qt's D-Bus; required before the first message.
void registerMenuMessages();

/// The menu as a tray host sees it: a root with id 0 and one node with an id per row.
/// Thread: any, one at a time.  Owns: the rows.
class MenuLayout {
 public:
  /// Gives the rows new ids, because a host may remember what the old ones meant.
  void setRows(std::vector<MenuItem> rows);
  /// Returns whether this changed the title of an existing row.
  bool setTitle(std::size_t row, const std::string& title);

  const std::vector<MenuItem>& rows() const { return rows_; }
  int idOf(std::size_t row) const { return firstId_ + static_cast<int>(row); }
  /// The row with this id; null for the root and unknown ids.
  const MenuItem* find(int id) const;
  bool has(int id) const { return id == kRootId || find(id) != nullptr; }

  /// `id`: one that `has` knows. Without `names`: all properties that have a value.
  QVariantMap properties(int id, const QStringList& names = {}) const;
  /// The node with the rows below it down to `depth`: 0 is the node alone, -1 everything.
  MenuNode node(int id, int depth, const QStringList& names) const;
  /// Skips unknown ids. Without `ids`: the root and all rows.
  QList<MenuRowProperties> group(const QList<int>& ids, const QStringList& names) const;

  static constexpr int kRootId = 0;

 private:
  std::vector<MenuItem> rows_;
  int firstId_ = 1;
};

/// The label that makes a tray host show `title` literally, `&` and `_` included.
QString trayHostLabel(std::string_view title);

/// The key combination in the names that hosts expect: "Control" and the X name of the key.
MenuShortcut menuShortcut(const std::string& keyEquivalent);

}  // namespace voxtrel
