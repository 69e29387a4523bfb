#pragma once

#include "voxtrel/platform/FormWindows.h"

namespace voxtrel {

class DesktopColors;

/// Shows the application's forms with Qt widgets.
/// Thread: the main thread.  Borrows: DesktopColors (must outlive this).
class QtFormWindows final : public FormWindows {
 public:
  explicit QtFormWindows(DesktopColors& colors) : colors_(colors) {}
  ~QtFormWindows() override;

  std::unique_ptr<FormWindow> makeWindow(const FormWindowOptions& options,
                                         std::shared_ptr<SettingsView> form) override;
  std::unique_ptr<FormWindow> makeWindow(const FormWindowOptions& options,
                                         std::shared_ptr<ModelDownloadView> form) override;

 private:
  DesktopColors& colors_;
};

}  // namespace voxtrel
