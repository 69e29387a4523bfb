#include "voxtrel/platform/linux/tray/MenuObject.h"

#include <QDBusConnection>
#include <QGuiApplication>
#include <utility>

namespace voxtrel {

MenuObject::MenuObject() {
  registerMenuMessages();
  connect(this, &MenuObject::chosen, this, &MenuObject::runAction, Qt::QueuedConnection);
}

void MenuObject::publish() {
  QDBusConnection::sessionBus().registerObject(kPath, this,
                                               QDBusConnection::ExportScriptableContents);
}

void MenuObject::setRows(std::vector<MenuItem> rows) {
  layout_.setRows(std::move(rows));
  emit LayoutUpdated(++revision_, MenuLayout::kRootId);
}

bool MenuObject::setTitle(std::size_t row, const std::string& title) {
  if (!layout_.setTitle(row, title)) return false;
  const int id = layout_.idOf(row);
  emit ItemsPropertiesUpdated({{id, layout_.properties(id, {"label"})}}, {});
  return true;
}

QString MenuObject::textDirection() {
  return QGuiApplication::isRightToLeft() ? "rtl" : "ltr";
}

// Called by hosts

uint MenuObject::GetLayout(int parentId, int recursionDepth, const QStringList& propertyNames,
                           MenuNode& layout) {
  if (known(parentId)) layout = layout_.node(parentId, recursionDepth, propertyNames);
  return revision_;
}

QList<MenuRowProperties> MenuObject::GetGroupProperties(const QList<int>& ids,
                                                        const QStringList& propertyNames) {
  return layout_.group(ids, propertyNames);
}

QDBusVariant MenuObject::GetProperty(int id, const QString& name) {
  if (!known(id)) return {};
  const QVariant value = layout_.properties(id).value(name);
  if (!value.isValid()) refuse("no such property");
  return QDBusVariant(value);
}

void MenuObject::Event(int id, const QString& eventId, const QDBusVariant&, uint) {
  if (!handleEvent(id, eventId)) refuse("no such row");
}

QList<int> MenuObject::EventGroup(const QList<MenuEvent>& events) {
  QList<int> unknown;
  for (const MenuEvent& event : events) {
    if (!handleEvent(event.id, event.type)) unknown.append(event.id);
  }
  return unknown;
}

bool MenuObject::AboutToShow(int id) {
  if (known(id)) noteShown(id);
  return false;  // hosts are always up to date
}

QList<int> MenuObject::AboutToShowGroup(const QList<int>& ids, QList<int>& idErrors) {
  for (const int id : ids) {
    if (!layout_.has(id)) idErrors.append(id);
    noteShown(id);
  }
  return {};
}

bool MenuObject::handleEvent(int id, const QString& type) {
  if (!layout_.has(id)) return false;
  if (type == "opened") noteShown(id);
  const MenuItem* const row = layout_.find(id);
  // A flood of clicks must not keep the menu busy with one action after the other.
  const bool isChosen = type == "clicked" && row != nullptr && row->enabled;
  if (isChosen && waiting_.insert(id).second) emit chosen(id);
  return true;
}

void MenuObject::runAction(int id) {
  waiting_.erase(id);
  const MenuItem* const row = layout_.find(id);
  if (row == nullptr || !row->action) return;
  const auto action = row->action;  // it may replace the rows
  action();
}

void MenuObject::noteShown(int id) {
  if (id == MenuLayout::kRootId && onShown_) onShown_();
}

bool MenuObject::known(int id) {
  if (layout_.has(id)) return true;
  refuse("no such row");
  return false;
}

void MenuObject::refuse(const QString& reason) {
  if (calledFromDBus()) sendErrorReply(QDBusError::InvalidArgs, reason);
}

}  // namespace voxtrel
