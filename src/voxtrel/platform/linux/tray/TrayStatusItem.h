#pragma once

#include <QIcon>
#include <memory>
#include <string>
#include <vector>

#include "voxtrel/platform/StatusItem.h"
#include "voxtrel/platform/linux/tray/MenuObject.h"
#include "voxtrel/platform/linux/tray/StatusNotifierItem.h"
#include "voxtrel/platform/linux/tray/TrayHost.h"

namespace voxtrel {

class XEmbedItem;

/// The status item in the desktop's tray. It appears as soon as there is a tray.
/// Thread: the main thread.  Owns: the item and its menu, for either kind of tray.
/// Fails by: never appearing, on a desktop without a tray.
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

  std::string symbol_;
  QIcon icon_;
  bool isAnnounced_ = false;
  MenuObject menu_;
  StatusNotifierItem item_;
  std::unique_ptr<XEmbedItem> xEmbedItem_;  ///< only while the tray is of that kind
  TrayHost host_;
};

}  // namespace voxtrel
