#pragma once

#include "platform/Alerts.h"
#include "platform/FormWindows.h"

namespace voxtrel {

struct PendingAlerts final : Alerts {
  void runModal(const Alert&, std::function<void(std::size_t)> onAnswer) override { onAnswer(1); }
};
struct PendingFormWindows final : FormWindows {
  struct Window final : FormWindow {
    bool isVisible() const override { return false; }
    void makeKeyAndOrderFront() override {}
    void close() override {}
  };
  std::unique_ptr<FormWindow> makeWindow(const FormWindowOptions&,
                                         std::shared_ptr<SettingsView>) override {
    return std::make_unique<Window>();
  }
  std::unique_ptr<FormWindow> makeWindow(const FormWindowOptions&,
                                         std::shared_ptr<ModelDownloadView>) override {
    return std::make_unique<Window>();
  }
};

}  // namespace voxtrel
