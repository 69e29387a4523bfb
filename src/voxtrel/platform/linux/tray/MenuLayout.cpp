#include "voxtrel/platform/linux/tray/MenuLayout.h"

#include <QDBusMetaType>
#include <utility>

namespace voxtrel {

namespace {

QVariantMap rootProperties() {
  return {{"children-display", "submenu"}};
}

QVariantMap rowProperties(const MenuItem& row) {
  QVariantMap properties = {{"visible", true}};
  if (row.separator) {
    properties.insert("type", "separator");
    return properties;
  }
  properties.insert("label", trayHostLabel(row.title));
  properties.insert("enabled", row.enabled);
  if (!row.keyEquivalent.empty()) {
    properties.insert("shortcut", QVariant::fromValue(menuShortcut(row.keyEquivalent)));
  }
  return properties;
}

QVariantMap only(const QStringList& names, QVariantMap properties) {
  if (names.isEmpty()) return properties;
  properties.removeIf([&](const auto& property) { return !names.contains(property.key()); });
  return properties;
}

}  // namespace

void registerMenuMessages() {
  qDBusRegisterMetaType<MenuNode>();
  qDBusRegisterMetaType<MenuRowProperties>();
  qDBusRegisterMetaType<QList<MenuRowProperties>>();
  qDBusRegisterMetaType<MenuRowRemovals>();
  qDBusRegisterMetaType<QList<MenuRowRemovals>>();
  qDBusRegisterMetaType<MenuEvent>();
  qDBusRegisterMetaType<QList<MenuEvent>>();
  qDBusRegisterMetaType<MenuShortcut>();
}

void MenuLayout::setRows(std::vector<MenuItem> rows) {
  firstId_ += static_cast<int>(rows_.size());
  rows_ = std::move(rows);
}

bool MenuLayout::setTitle(std::size_t row, const std::string& title) {
  if (row >= rows_.size() || rows_[row].title == title) return false;
  rows_[row].title = title;
  return true;
}

const MenuItem* MenuLayout::find(int id) const {
  if (id < firstId_) return nullptr;
  const auto row = static_cast<std::size_t>(id - firstId_);
  return row < rows_.size() ? &rows_[row] : nullptr;
}

QVariantMap MenuLayout::properties(int id, const QStringList& names) const {
  const MenuItem* const row = find(id);
  return only(names, row == nullptr ? rootProperties() : rowProperties(*row));
}

MenuNode MenuLayout::node(int id, int depth, const QStringList& names) const {
  MenuNode node{id, properties(id, names), {}};
  if (id != kRootId || depth == 0) return node;
  for (std::size_t row = 0; row < rows_.size(); ++row) {
    const MenuNode child{idOf(row), properties(idOf(row), names), {}};
    node.children.append(QVariant::fromValue(child));
  }
  return node;
}

QList<MenuRowProperties> MenuLayout::group(const QList<int>& ids, const QStringList& names) const {
  QList<MenuRowProperties> found;
  for (const int id : ids) {
    if (has(id)) found.append({id, properties(id, names)});
  }
  if (!ids.isEmpty()) return found;
  found.append({kRootId, properties(kRootId, names)});
  for (std::size_t row = 0; row < rows_.size(); ++row) {
    found.append({idOf(row), properties(idOf(row), names)});
  }
  return found;
}

QString trayHostLabel(std::string_view title) {
  QString text = QString::fromUtf8(title.data(), static_cast<qsizetype>(title.size()));
  return text.replace(u'_', "__");
}

MenuShortcut menuShortcut(const std::string& keyEquivalent) {
  // X names letters and digits by themselves, other characters with words.
  const QString key = keyEquivalent == "," ? "comma" : QString::fromStdString(keyEquivalent);
  return {{"Control", key}};
}

}  // namespace voxtrel
