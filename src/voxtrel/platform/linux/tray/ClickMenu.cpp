#include "voxtrel/platform/linux/tray/ClickMenu.h"

#include <chrono>

#include "voxtrel/platform/linux/tray/RowMenu.h"

namespace voxtrel {
namespace {

/// How long a host gets to ask for the menu.
constexpr std::chrono::milliseconds kHostsTurn{150};

}  // namespace

ClickMenu::ClickMenu(const std::vector<MenuItem>& rows) : rows_(rows) {
  hostsTurn_.setSingleShot(true);
  hostsTurn_.setInterval(kHostsTurn);
  QObject::connect(&hostsTurn_, &QTimer::timeout, &hostsTurn_, [this] { toggle(place_); });
}

ClickMenu::~ClickMenu() = default;

void ClickMenu::clicked(QPoint place) {
  place_ = place;
  if (isOpen()) return toggle(place);
  hostsTurn_.start();
}

void ClickMenu::hostShowsMenu() {
  hostsTurn_.stop();
  if (menu_) menu_->close();
}

void ClickMenu::toggle(QPoint place) {
  hostsTurn_.stop();
  if (!menu_) menu_ = std::make_unique<RowMenu>(rows_);
  menu_->toggleAt(place);
}

bool ClickMenu::isOpen() const {
  return menu_ && menu_->widget().isVisible();
}

void ClickMenu::rowsReplaced() {
  if (menu_) menu_->setRows(rows_);
}

void ClickMenu::titleChanged(std::size_t row) {
  if (menu_) menu_->setTitle(row, rows_[row].title);
}

}  // namespace voxtrel
