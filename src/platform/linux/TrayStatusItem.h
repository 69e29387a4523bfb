#pragma once

#include <QMenu>
#include <QString>
#include <QSystemTrayIcon>
#include <memory>
#include <vector>

#include "platform/StatusItem.h"
#include "platform/linux/MenuText.h"
#include "platform/linux/TrayHost.h"

namespace voxtrel {

/// The status item in the desktop's tray, once there is one; until then it is only remembered.
/// Thread: the main thread.  Owns: the tray icon, its menu.
/// Fails by: never appearing, where the desktop has no tray.
class TrayStatusItem final : public StatusItem {
 public:
  TrayStatusItem();
  ~TrayStatusItem() override;

  void setMenu(std::vector<MenuItem> rows) override;
  void setTitle(std::size_t row, const std::string& title) override;
  void setSymbol(std::string_view name) override;

 private:
  void hostFound(TrayHost::Kind kind);
  void appearWhenReady();
  void fillMenu();
  QAction* addRow(const MenuItem& row);

  // The tray goes before the menu it shows.
  std::unique_ptr<QMenu> menu_;
  std::unique_ptr<QSystemTrayIcon> tray_;
  std::vector<MenuItem> rows_;
  std::vector<QAction*> actions_;  ///< one for each of `rows_`, once there is a menu
  std::string symbol_;             ///< the one shown, or to be shown
  QString themedName_;             ///< of its icon
  MenuRenderer renderer_ = MenuRenderer::trayHost;
  bool isHostReady_ = false;
  TrayHost host_;
};

}  // namespace voxtrel
