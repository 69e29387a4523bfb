#include "voxtrel/platform/linux/tray/TrayStatusItem.h"

#include <utility>

#include "common/base/SessionKind.h"
#include "voxtrel/platform/linux/tray/SymbolIcons.h"
#include "voxtrel/platform/linux/tray/XEmbedItem.h"

namespace voxtrel {

TrayStatusItem::TrayStatusItem(Notifications& notifications)
    : notifications_(notifications),
      clickMenu_(menu_.rows()),
      item_(MenuObject::kPath, {.activated = [this](QPoint place) { clickMenu_.clicked(place); },
                                .menuWanted = [this](QPoint place) { clickMenu_.toggle(place); }}),
      host_([this](TrayHost::Kind kind) { hostFound(kind); }) {
  menu_.setOnShown([this] { clickMenu_.hostShowsMenu(); });
}

TrayStatusItem::~TrayStatusItem() = default;

void TrayStatusItem::setMenu(std::vector<MenuItem> rows) {
  menu_.setRows(std::move(rows));
  clickMenu_.rowsReplaced();
  if (xEmbedItem_) xEmbedItem_->setRows(menu_.rows());
  appearWhenReady();
}

void TrayStatusItem::setTitle(std::size_t row, const std::string& title) {
  if (!menu_.setTitle(row, title)) return;
  clickMenu_.titleChanged(row);
  if (xEmbedItem_) xEmbedItem_->setTitle(row, title);
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
  } else if (kind == TrayHost::Kind::none) {
    if (std::exchange(isReported_, true)) return;
    notifications_.post(
        noTrayNotification(qEnvironmentVariable("XDG_CURRENT_DESKTOP").toStdString()));
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

UserNotification noTrayNotification(const std::string& desktops) {
  constexpr const char* kGnome =
      "GNOME shows no tray icons by itself. Install the extension \"AppIndicator and "
      "KStatusNotifierItem Support\" (Debian: gnome-shell-extension-appindicator), log in again "
      "and "
      "turn it on.";
  constexpr const char* kOther =
      "No panel here shows tray icons. Add a tray to your panel, or install one that has it, such "
      "as "
      "waybar.";
  constexpr const char* kMeanwhile =
      " Meanwhile, use voxtrel --settings, --restart and --quit in a terminal.";
  const bool isGnome = desktopFamily(desktops) == DesktopFamily::gnome;
  return {.identifier = "org.voxtrel.Voxtrel.noTray",
          .title = "Voxtrel runs without an icon",
          .body = std::string(isGnome ? kGnome : kOther) + kMeanwhile,
          .categoryIdentifier = {}};
}

}  // namespace voxtrel
