#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace voxtrel {

/// One row of the status item's menu.
struct MenuItem {
  std::string title{};  ///< shown as it is, `&` and `_` included
  /// One lower-case character, used with the platform's command key; empty: none.
  std::string keyEquivalent{};
  bool enabled = true;
  bool separator = false;          ///< a line; the other fields are then unused
  std::function<void()> action{};  ///< called on the main thread when the row is chosen
  /// Name of an action that the platform may have itself; it then takes the place of `action`, and
  /// the platform decides whether the row is enabled.
  std::string systemAction{};
};

/// The icon in the menu bar or tray, with its menu.
/// Setting what is already set sends nothing to the desktop.
/// Thread: the main thread.
class StatusItem {
 public:
  virtual ~StatusItem() = default;

  /// Replaces the menu. Rows count from 0 and include separators.
  virtual void setMenu(std::vector<MenuItem> rows) = 0;

  virtual void setTitle(std::size_t row, const std::string& title) = 0;

  /// Shows the symbol `name` ("mic.fill"); an unknown name leaves the icon as it is.
  virtual void setSymbol(std::string_view name) = 0;
};

}  // namespace voxtrel
