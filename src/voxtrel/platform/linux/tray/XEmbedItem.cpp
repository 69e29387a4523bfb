#include "voxtrel/platform/linux/tray/XEmbedItem.h"

#include <QKeySequence>

namespace voxtrel {

XEmbedItem::XEmbedItem(const std::vector<MenuItem>& rows, const QIcon& icon) : tray_(icon) {
  setRows(rows);
  tray_.setContextMenu(&menu_);
  tray_.show();
}

void XEmbedItem::setRows(const std::vector<MenuItem>& rows) {
  menu_.clear();
  actions_.clear();
  for (const MenuItem& row : rows) actions_.push_back(addRow(row));
}

void XEmbedItem::setTitle(std::size_t row, const std::string& title) {
  actions_[row]->setText(widgetText(title));
}

QAction* XEmbedItem::addRow(const MenuItem& row) {
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

QString widgetText(std::string_view title) {
  QString text = QString::fromUtf8(title.data(), static_cast<qsizetype>(title.size()));
  return text.replace(u'&', "&&");
}

}  // namespace voxtrel
