#pragma once

#include "platform/Alerts.h"
#include "platform/FormWindows.h"
#include "platform/LoginItem.h"
#include "platform/PrivacySettings.h"
#include "platform/UserDefaults.h"

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
struct PendingLoginItem final : LoginItem {
  bool isEnabled() const override { return false; }
  bool enable() override { return false; }
  bool disable() override { return true; }
};
struct PendingPrivacySettings final : PrivacySettings {
  void open(PrivacyPane) override {}
};
struct PendingUserDefaults final : UserDefaults {
  bool boolForKey(std::string_view) const override { return false; }
  void setBool(std::string_view, bool) override {}
};

}  // namespace voxtrel
