#pragma once

#include "voxtrel/platform/FormWindows.h"

namespace voxtrel {

/// Shows the application's forms in AppKit's windows.
/// Thread: the main thread.
class AppKitFormWindows final : public FormWindows {
 public:
  std::unique_ptr<FormWindow> makeWindow(const FormWindowOptions& options,
                                         std::shared_ptr<SettingsView> form) override;
  std::unique_ptr<FormWindow> makeWindow(const FormWindowOptions& options,
                                         std::shared_ptr<ModelDownloadView> form) override;
};

}  // namespace voxtrel
