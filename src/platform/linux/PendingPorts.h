#pragma once

#include "platform/LoginItem.h"
#include "platform/PrivacySettings.h"
#include "platform/UserDefaults.h"

namespace voxtrel {

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
