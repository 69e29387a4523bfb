#pragma once

#include <QMenu>
#include <string>
#include <string_view>
#include <vector>

#include "voxtrel/platform/StatusItem.h"

namespace voxtrel {

/// The item's rows as a menu of ours, for hosts that draw none.
/// Thread: the main thread.  Owns: the menu.
class RowMenu {
 public:
  explicit RowMenu(const std::vector<MenuItem>& rows) { setRows(rows); }

  void setRows(const std::vector<MenuItem>& rows);
  void setTitle(std::size_t row, const std::string& title);
  QMenu& widget() { return menu_; }

  /// Opens it at the pointer, or closes it if it is open.
  void toggleAtPointer();
  /// The same where a host says that its icon is. The pointer is better where it is known: under X11.
  void toggleAt(QPoint place);
  void close() { menu_.hide(); }

 private:
  QAction* addRow(const MenuItem& row);

  QMenu menu_;
  std::vector<QAction*> actions_;  ///< one per row
};

/// The text that makes a QAction show `title` literally, `&` included.
QString widgetText(std::string_view title);

}  // namespace voxtrel
