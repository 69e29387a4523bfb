#pragma once

#include <QIcon>
#include <QMenu>
#include <QSystemTrayIcon>
#include <string>
#include <string_view>
#include <vector>

#include "voxtrel/platform/StatusItem.h"

namespace voxtrel {

/// The item in the older X11 tray, with Qt's own menu. Qt decides how to show tray icons when the
/// first is created, so none may be created while a host for the newer kind is running.
/// Thread: the main thread.  Owns: the tray icon, its menu.
class XEmbedItem {
 public:
  XEmbedItem(const std::vector<MenuItem>& rows, const QIcon& icon);

  void setRows(const std::vector<MenuItem>& rows);
  void setTitle(std::size_t row, const std::string& title);
  void setIcon(const QIcon& icon) { tray_.setIcon(icon); }

 private:
  QAction* addRow(const MenuItem& row);

  // In this order, because the tray icon must be destroyed before its menu.
  QMenu menu_;
  QSystemTrayIcon tray_;
  std::vector<QAction*> actions_;  ///< one per row
};

/// The text that makes a QAction show `title` literally, `&` included.
QString widgetText(std::string_view title);

}  // namespace voxtrel
