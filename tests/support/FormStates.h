#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>

#include "support/FakeChildProcesses.h"
#include "support/FakeForms.h"
#include "support/FakePorts.h"
#include "support/ManualTime.h"
#include "support/ScratchFolder.h"
#include "voxtrel/download/ModelDownloadView.h"
#include "voxtrel/forms/SettingsView.h"

namespace voxtrel::testing {

/// Forms without windows, with everything around them under the test's control.
struct FormStates {
  std::shared_ptr<SettingsView> settings() {
    return std::make_shared<SettingsView>(ConfigManager(home.path()),
                                          SettingsPorts{loginItem, userDefaults}, [this] {
                                            if (onSave) onSave();
                                          });
  }

  std::shared_ptr<ModelDownloadView> download() {
    return ModelDownloadView::create({bundle, time, launcher, time}, {},
                                     {[this] { ++completions; },
                                      [this] {
                                        ++skips;
                                        if (onSkip) onSkip();
                                      }});
  }

  // What the running setup does.
  void print(std::string_view text) {
    time.runPosted();
    launcher.last().print(text);
    time.runPosted();
  }
  void exit(int status) {
    time.runPosted();
    launcher.last().exit(status);
    time.runPosted();
  }

  ScratchFolder home;
  ManualTime time;
  FakeBundle bundle;
  FakeLauncher launcher{time};
  FakeLoginItem loginItem;
  FakeUserDefaults userDefaults;
  std::function<void()> onSave, onSkip;
  int completions = 0, skips = 0;
};

}  // namespace voxtrel::testing
