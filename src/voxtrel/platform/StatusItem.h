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
  /// One lower-case character, pressed with the platform's command key; empty: none.
  std::string keyEquivalent{};
  bool enabled = true;
  bool separator = false;          ///< a line; the other fields are then unused
  std::function<void()> action{};  ///< called on the main thread when the row is chosen
};

/// The icon in the menu bar or tray, with its menu.
/// Thread: the main thread. Setting what is already set costs nothing outside the process.
class StatusItem {
 public:
  virtual ~StatusItem() = default;

  /// Replaces the menu; rows are counted from 0, separators included.
  virtual void setMenu(std::vector<MenuItem> rows) = 0;

  virtual void setTitle(std::size_t row, const std::string& title) = 0;

  /// Shows the symbol called `name` ("mic.fill"); a name it does not know leaves the icon as it is.
  virtual void setSymbol(std::string_view name) = 0;
};

}  // namespace voxtrel
