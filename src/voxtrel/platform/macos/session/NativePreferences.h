#pragma once

#import <Foundation/Foundation.h>
#import <ServiceManagement/ServiceManagement.h>

#include "voxtrel/platform/Preferences.h"

namespace voxtrel {

/// The application itself as a login item.
/// Thread: the main thread.
/// Fails by: `enable` and `disable` return false, for instance where the user must approve first.
class MainAppLoginItem final : public LoginItem {
 public:
  bool isEnabled() const override;
  [[nodiscard]] bool enable() override;
  [[nodiscard]] bool disable() override;
  [[nodiscard]] bool restore() override;
};

/// The application's own domain of the user's defaults.
/// Thread: the main thread.
class StandardUserDefaults final : public UserDefaults {
 public:
  bool boolForKey(std::string_view key) const override;
  void setBool(std::string_view key, bool value) override;
};

}  // namespace voxtrel
