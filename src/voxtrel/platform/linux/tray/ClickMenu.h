#pragma once

#include <QPoint>
#include <QTimer>
#include <memory>
#include <string>
#include <vector>

#include "voxtrel/platform/StatusItem.h"

namespace voxtrel {

class RowMenu;

/// Opens the menu for a click that a host passes on to us. Some of these hosts draw the menu
/// themselves once they hear that the click has no action. If this host does not, the menu is drawn
/// here.
/// Thread: the main thread.  Owns: our menu, made at the first click that needs it.
/// Borrows: the rows (must outlive this).
class ClickMenu {
 public:
  explicit ClickMenu(const std::vector<MenuItem>& rows);
  ~ClickMenu();
  ClickMenu(const ClickMenu&) = delete;
  ClickMenu& operator=(const ClickMenu&) = delete;

  /// A click without a menu of the host's yet.
  void clicked(QPoint place);
  /// The host draws the menu, now or in a moment: ours goes.
  void hostShowsMenu();
  /// Opens our menu, or closes it if it is open.
  void toggle(QPoint place);
  bool isOpen() const;

  void rowsReplaced();
  void titleChanged(std::size_t row);

 private:
  const std::vector<MenuItem>& rows_;
  QTimer hostsTurn_;
  QPoint place_;
  std::unique_ptr<RowMenu> menu_;  ///< null until first needed
};

}  // namespace voxtrel
