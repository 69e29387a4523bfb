#pragma once

#include <QIcon>
#include <QSystemTrayIcon>
#include <string>
#include <vector>

#include "voxtrel/platform/linux/tray/RowMenu.h"

namespace voxtrel {

/// The item in the older X11 tray, with Qt's own menu, which either button opens. Qt decides how to show
/// tray icons when the first is created, so none may be created while a host for the newer kind is
/// running.
/// Thread: the main thread.  Owns: the tray icon, its menu.
class XEmbedItem {
 public:
  XEmbedItem(const std::vector<MenuItem>& rows, const QIcon& icon);

  void setRows(const std::vector<MenuItem>& rows) { menu_.setRows(rows); }
  void setTitle(std::size_t row, const std::string& title) { menu_.setTitle(row, title); }
  void setIcon(const QIcon& icon) { tray_.setIcon(icon); }

 private:
  // In this order, because the tray icon must be destroyed before its menu.
  RowMenu menu_;
  QSystemTrayIcon tray_;
};

}  // namespace voxtrel
