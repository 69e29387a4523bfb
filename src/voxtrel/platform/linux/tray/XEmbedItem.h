#pragma once

#include <QIcon>
#include <QMenu>
#include <QSystemTrayIcon>
#include <string>
#include <vector>

#include "voxtrel/platform/StatusItem.h"

namespace voxtrel {

/// The item in the older X11 tray, with a menu of Qt's own. Qt settles how it shows tray icons when
/// the first is made, so none may be made while there is a host for the newer kind.
/// Thread: the main thread.  Owns: the tray icon, its menu.
class XEmbedItem {
 public:
  XEmbedItem(const std::vector<MenuItem>& rows, const QIcon& icon);

  void setRows(const std::vector<MenuItem>& rows);
  void setTitle(std::size_t row, const std::string& title);
  void setIcon(const QIcon& icon) { tray_.setIcon(icon); }

 private:
  QAction* addRow(const MenuItem& row);

  // The tray goes before the menu it shows.
  QMenu menu_;
  QSystemTrayIcon tray_;
  std::vector<QAction*> actions_;  ///< one for each row
};

}  // namespace voxtrel
