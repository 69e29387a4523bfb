#include "voxtrel/platform/linux/tray/RowMenu.h"

#include <QCursor>
#include <QGuiApplication>
#include <QKeySequence>

namespace voxtrel {
namespace {

/// A compositor tells an X client the pointer's place only above the client's windows.
bool isPointerKnown() {
  return qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

}  // namespace

void RowMenu::setRows(const std::vector<MenuItem>& rows) {
  menu_.clear();
  actions_.clear();
  for (const MenuItem& row : rows) actions_.push_back(addRow(row));
}

void RowMenu::setTitle(std::size_t row, const std::string& title) {
  actions_[row]->setText(widgetText(title));
}

QAction* RowMenu::addRow(const MenuItem& row) {
  if (row.separator) return menu_.addSeparator();
  QAction* const action = menu_.addAction(widgetText(row.title));
  action->setEnabled(row.enabled);
  if (!row.keyEquivalent.empty()) {
    const QString key = QString::fromStdString(row.keyEquivalent);
    action->setShortcut(QKeySequence("Ctrl+" + key.toUpper()));
    action->setShortcutVisibleInContextMenu(true);
  }
  if (row.action) {
    // Queued, so that the menu closes before a slow action runs.
    QObject::connect(action, &QAction::triggered, action, row.action, Qt::QueuedConnection);
  }
  return action;
}

void RowMenu::toggleAtPointer() {
  toggleAt(QCursor::pos());
}

void RowMenu::toggleAt(QPoint place) {
  if (menu_.isVisible()) return close();
  // Wayland itself lets no window of ours open at a place of its choice.
  if (QGuiApplication::platformName().startsWith(QLatin1String("wayland"))) return;
  const bool isPlaceGiven = !place.isNull() && !isPointerKnown();
  menu_.popup(isPlaceGiven ? place : QCursor::pos());
}

QString widgetText(std::string_view title) {
  QString text = QString::fromUtf8(title.data(), static_cast<qsizetype>(title.size()));
  return text.replace(u'&', "&&");
}

}  // namespace voxtrel
