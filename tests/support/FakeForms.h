#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "voxtrel/download/ModelDownloadView.h"
#include "voxtrel/forms/SettingsView.h"
#include "voxtrel/platform/Alerts.h"
#include "voxtrel/platform/FormWindows.h"
#include "voxtrel/platform/Permissions.h"
#include "voxtrel/platform/Preferences.h"

namespace voxtrel::testing {

/// Windows that are never drawn. Each has one of the two forms.
struct FakeFormWindows : FormWindows {
  struct State {
    FormWindowOptions options;
    std::shared_ptr<SettingsView> settings;
    std::shared_ptr<ModelDownloadView> download;
    bool visible = false;
    bool alive = true;  // the window, not its form
    int timesInFront = 0;
  };

  struct Window : FormWindow {
    explicit Window(std::shared_ptr<State> newState) : state(std::move(newState)) {}
    ~Window() override {
      state->alive = false;
      state->visible = false;
    }
    bool isVisible() const override { return state->visible; }
    void makeKeyAndOrderFront() override {
      ++state->timesInFront;
      if (std::exchange(state->visible, true)) return;
      if (state->settings) state->settings->appeared();
      if (state->download) state->download->appeared();
    }
    void close() override { state->visible = false; }
    std::shared_ptr<State> state;
  };

  std::unique_ptr<FormWindow> makeWindow(const FormWindowOptions& options,
                                         std::shared_ptr<SettingsView> form) override {
    windows.push_back(std::make_shared<State>(State{options, std::move(form), nullptr}));
    return std::make_unique<Window>(windows.back());
  }
  std::unique_ptr<FormWindow> makeWindow(const FormWindowOptions& options,
                                         std::shared_ptr<ModelDownloadView> form) override {
    windows.push_back(std::make_shared<State>(State{options, nullptr, std::move(form)}));
    return std::make_unique<Window>(windows.back());
  }

  /// The user's click on the close box of the newest window.
  void closeLast() { windows.back()->visible = false; }
  State& last() { return *windows.at(windows.size() - 1); }

  std::vector<std::shared_ptr<State>> windows;  // every one made, oldest first
};

struct FakeAlerts : Alerts {
  void runModal(const Alert& alert, std::function<void(std::size_t)> newOnAnswer) override {
    shown.push_back(alert);
    onAnswer = std::move(newOnAnswer);
  }
  std::vector<Alert> shown;
  std::function<void(std::size_t button)> onAnswer;  // of the newest; the test answers
};

struct FakePrivacySettings : PrivacySettings {
  void open(PrivacyPane pane) override { opened.push_back(pane); }
  std::vector<PrivacyPane> opened;
};

struct FakeLoginItem : LoginItem {
  bool isEnabled() const override { return enabled; }
  bool enable() override { return set(true); }
  bool disable() override { return set(false); }
  bool restore() override { return isDecided ? enabled : set(true); }

  bool enabled = false;
  bool isDecided = false;  // by the user or the desktop
  bool canEnable = true, canDisable = true;
  std::vector<bool> asked;  // true for enable, false for disable; oldest first

 private:
  bool set(bool value) {
    asked.push_back(value);
    if (!(value ? canEnable : canDisable)) return false;
    enabled = value;
    return true;
  }
};

struct FakeUserDefaults : UserDefaults {
  bool boolForKey(std::string_view key) const override {
    const auto found = values.find(std::string(key));
    return found != values.end() && found->second;
  }
  void setBool(std::string_view key, bool value) override { values[std::string(key)] = value; }
  std::map<std::string, bool> values;
};

}  // namespace voxtrel::testing
