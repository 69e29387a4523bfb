#pragma once

namespace voxtrel {

/// Shows the user where the settings are.
/// Thread: the main thread.
class SettingsPresenter {
 public:
  virtual ~SettingsPresenter() = default;

  virtual void showSettings() = 0;
};

}  // namespace voxtrel
