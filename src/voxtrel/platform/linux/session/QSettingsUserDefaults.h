#pragma once

#include <QString>
#include <string>

#include "voxtrel/platform/Preferences.h"

namespace voxtrel {

/// User defaults in `voxtrel/voxtrel.conf` below the folder for settings, read and written afresh
/// on every call. The file appears with the first value.
/// Thread: the main thread.  Fails by: false, and forgetting.
class QSettingsUserDefaults final : public UserDefaults {
 public:
  /// `configFolder`: absolute; without one nothing is kept.
  explicit QSettingsUserDefaults(const std::string& configFolder);

  bool boolForKey(std::string_view key) const override;
  void setBool(std::string_view key, bool value) override;

 private:
  const QString file_;
};

}  // namespace voxtrel
