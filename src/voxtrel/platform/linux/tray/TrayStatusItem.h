#pragma once

#include <QIcon>
#include <memory>
#include <string>
#include <vector>

#include "voxtrel/platform/Notifications.h"
#include "voxtrel/platform/StatusItem.h"
#include "voxtrel/platform/linux/tray/ClickMenu.h"
#include "voxtrel/platform/linux/tray/MenuObject.h"
#include "voxtrel/platform/linux/tray/StatusNotifierItem.h"
#include "voxtrel/platform/linux/tray/TrayHost.h"

namespace voxtrel {

class XEmbedItem;

/// The status item in the desktop's tray. It appears as soon as there is a tray.
/// Thread: the main thread.  Owns: the item and its menu, for either kind of tray.
/// Borrows: Notifications.
/// Fails by: not appearing on a desktop without a tray; one notification says what is missing there.
class TrayStatusItem final : public StatusItem {
 public:
  explicit TrayStatusItem(Notifications& notifications);
  ~TrayStatusItem() override;

  void setMenu(std::vector<MenuItem> rows) override;
  void setTitle(std::size_t row, const std::string& title) override;
  void setSymbol(std::string_view name) override;

 private:
  void hostFound(TrayHost::Kind kind);
  void appearWhenReady();

  Notifications& notifications_;
  bool isReported_ = false;  ///< that there is no tray
  std::string symbol_;
  QIcon icon_;
  bool isAnnounced_ = false;
  MenuObject menu_;
  ClickMenu clickMenu_;
  StatusNotifierItem item_;
  std::unique_ptr<XEmbedItem> xEmbedItem_;  ///< only while the tray is of that kind
  TrayHost host_;
};

/// What to say where no program shows the tray. `desktops`: as in XDG_CURRENT_DESKTOP.
UserNotification noTrayNotification(const std::string& desktops);

}  // namespace voxtrel
