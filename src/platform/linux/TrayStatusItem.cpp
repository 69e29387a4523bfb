#include "platform/linux/TrayStatusItem.h"

#include <QKeySequence>
#include <utility>

#include "platform/linux/SymbolIcons.h"

namespace voxtrel {

TrayStatusItem::TrayStatusItem() : host_([this](TrayHost::Kind kind) { hostFound(kind); }) {}

TrayStatusItem::~TrayStatusItem() = default;

void TrayStatusItem::setMenu(std::vector<MenuItem> rows) {
  rows_ = std::move(rows);
  if (menu_) fillMenu();
  appearWhenReady();
}

void TrayStatusItem::setTitle(std::size_t row, const std::string& title) {
  if (row >= rows_.size() || rows_[row].title == title) return;
  rows_[row].title = title;
  if (menu_) actions_[row]->setText(menuText(title, renderer_));
}

void TrayStatusItem::setSymbol(std::string_view name) {
  if (name == symbol_) return;
  const auto themedName = themedIconName(name);
  if (!themedName) return;
  symbol_ = name;
  themedName_ = *themedName;
  if (tray_) tray_->setIcon(symbolIcon(themedName_));
  appearWhenReady();
}

void TrayStatusItem::hostFound(TrayHost::Kind kind) {
  isHostReady_ = true;
  renderer_ = kind == TrayHost::Kind::xEmbed ? MenuRenderer::widget : MenuRenderer::trayHost;
  appearWhenReady();
}

void TrayStatusItem::appearWhenReady() {
  // An item without icon or menu would appear only to change at once.
  if (tray_ || !isHostReady_ || rows_.empty() || themedName_.isEmpty()) return;
  menu_ = std::make_unique<QMenu>();
  fillMenu();
  tray_ = std::make_unique<QSystemTrayIcon>(symbolIcon(themedName_));
  tray_->setContextMenu(menu_.get());
  tray_->show();
}

void TrayStatusItem::fillMenu() {
  menu_->clear();
  actions_.clear();
  for (const MenuItem& row : rows_) actions_.push_back(addRow(row));
}

QAction* TrayStatusItem::addRow(const MenuItem& row) {
  if (row.separator) return menu_->addSeparator();
  QAction* const action = menu_->addAction(menuText(row.title, renderer_));
  action->setEnabled(row.enabled);
  if (!row.keyEquivalent.empty()) {
    const QString key = QString::fromStdString(row.keyEquivalent);
    action->setShortcut(QKeySequence("Ctrl+" + key.toUpper()));
    action->setShortcutVisibleInContextMenu(true);
  }
  if (row.action) {
    // Queued, so that the host has its answer before an action takes its time.
    QObject::connect(action, &QAction::triggered, action, row.action, Qt::QueuedConnection);
  }
  return action;
}

}  // namespace voxtrel
