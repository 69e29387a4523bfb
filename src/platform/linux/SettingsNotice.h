#pragma once

#include <string>
#include <utility>

#include "platform/SettingsPresenter.h"
#include "platform/linux/NoticeBox.h"

namespace voxtrel {

/// Tells the user which file holds the settings.
/// Thread: the main thread.  Owns: the box.
class SettingsNotice final : public SettingsPresenter {
 public:
  explicit SettingsNotice(std::string configurationFile) : file_(std::move(configurationFile)) {}

  void showSettings() override {
    box_.show("Voxtrel Settings", "The settings are in this file:", QString::fromStdString(file_));
  }

 private:
  std::string file_;
  NoticeBox box_;
};

}  // namespace voxtrel
