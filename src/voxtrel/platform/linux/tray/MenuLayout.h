#pragma once

#include <optional>
#include <string>
#include <vector>

#include "voxtrel/platform/StatusItem.h"
#include "voxtrel/platform/linux/tray/MenuMessages.h"

namespace voxtrel {

/// The menu as a tray host sees it: a root, whose number is 0, and one numbered node for each row.
/// Thread: any, one at a time.  Owns: the rows.
class MenuLayout {
 public:
  /// The rows get numbers that none had before: a host may remember what the old ones meant.
  void setRows(std::vector<MenuItem> rows);
  /// Whether the row is there and had another title.
  bool setTitle(std::size_t row, const std::string& title);

  const std::vector<MenuItem>& rows() const { return rows_; }
  int idOf(std::size_t row) const { return firstId_ + static_cast<int>(row); }
  /// The row of a number; null for the root and for strangers.
  const MenuItem* find(int id) const;
  bool has(int id) const { return id == kRootId || find(id) != nullptr; }

  /// Of a number that `has` knows. No `names`: all properties that have a value.
  QVariantMap properties(int id, const QStringList& names = {}) const;
  /// The node with the rows below it down to `depth`; 0 is the node alone, less than 0 everything.
  MenuNode node(int id, int depth, const QStringList& names) const;
  /// Of those of the numbers that are known; no `ids`: of all.
  QList<MenuRowProperties> group(const QList<int>& ids, const QStringList& names) const;

  static constexpr int kRootId = 0;

 private:
  std::vector<MenuItem> rows_;
  int firstId_ = 1;
};

/// How hosts name the key combination: "Control" and the X name of the key.
MenuShortcut menuShortcut(const std::string& keyEquivalent);

}  // namespace voxtrel
