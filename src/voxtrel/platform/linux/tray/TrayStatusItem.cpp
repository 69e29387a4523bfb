#include "voxtrel/platform/linux/tray/TrayStatusItem.h"

#include <utility>

#include "voxtrel/platform/linux/tray/SymbolIcons.h"
#include "voxtrel/platform/linux/tray/XEmbedItem.h"

namespace voxtrel {

TrayStatusItem::TrayStatusItem()
    : item_(MenuObject::kPath), host_([this](TrayHost::Kind kind) { hostFound(kind); }) {}

TrayStatusItem::~TrayStatusItem() = default;

void TrayStatusItem::setMenu(std::vector<MenuItem> rows) {
  menu_.setRows(std::move(rows));
  if (xEmbedItem_) xEmbedItem_->setRows(menu_.rows());
  appearWhenReady();
}

void TrayStatusItem::setTitle(std::size_t row, const std::string& title) {
  if (menu_.setTitle(row, title) && xEmbedItem_) xEmbedItem_->setTitle(row, title);
}

void TrayStatusItem::setSymbol(std::string_view name) {
  if (name == symbol_) return;
  const auto themedName = themedIconName(name);
  if (!themedName) return;
  symbol_ = name;
  icon_ = symbolIcon(*themedName);
  item_.setIcon(icon_);
  if (xEmbedItem_) xEmbedItem_->setIcon(icon_);
  appearWhenReady();
}

void TrayStatusItem::hostFound(TrayHost::Kind kind) {
  if (kind == TrayHost::Kind::statusNotifier) {
    xEmbedItem_.reset();
  } else if (!xEmbedItem_) {
    xEmbedItem_ = std::make_unique<XEmbedItem>(menu_.rows(), icon_);
  }
}

void TrayStatusItem::appearWhenReady() {
  // Without icon or menu, the item would appear and then change at once.
  if (isAnnounced_ || menu_.rows().empty() || symbol_.empty()) return;
  isAnnounced_ = true;
  menu_.publish();
  item_.publish();
  host_.announce(StatusNotifierItem::busName());
}

}  // namespace voxtrel
