#pragma once

#include <QString>
#include <string>

#include "voxtrel/platform/Preferences.h"

namespace voxtrel {

/// User defaults in `voxtrel/voxtrel.conf` of the settings folder, read and written on every call.
/// The first `setBool` creates the file.
/// Thread: the main thread.  Fails by: reading false; losing the value.
class QSettingsUserDefaults final : public UserDefaults {
 public:
  /// `configFolder`: absolute path; if empty, nothing is kept.
  explicit QSettingsUserDefaults(const std::string& configFolder);

  bool boolForKey(std::string_view key) const override;
  void setBool(std::string_view key, bool value) override;

 private:
  const QString file_;
};

}  // namespace voxtrel
