#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <string_view>
#include <utility>

#include "common/settings/ConfigManager.h"

namespace voxtrel {

class LoginItem;
class UserDefaults;

/// A row of a picker: what it shows and what it stands for.
template <typename Value>
struct Choice {
  std::string_view display;
  Value value;
};

/// What the form needs from outside; all of it must outlive the form.
struct SettingsPorts {
  LoginItem& loginItem;
  UserDefaults& userDefaults;
};

/// The settings form without its widgets: tables, selections, launch at login, saving. A window
/// shows what this says and reports what the user did.
/// Thread: main.  Owns: the selections.  Borrows: the ports.
/// Fails by: ending the process for an index outside its table, which no picker offers.
class SettingsView {
 public:
  static constexpr std::string_view kModelLabel = "Model:";
  static constexpr std::string_view kModelName = "Whisper Large v3";
  static constexpr std::string_view kHotkeyLabel = "Hotkey:";
  static constexpr std::string_view kInputLanguageLabel = "Input Language:";
  static constexpr std::string_view kOutputLabel = "Output:";
  static constexpr std::string_view kLaunchAtLoginTitle = "Launch at Login";
  static constexpr std::string_view kSaveTitle = "Save & Restart";

  /// Key of the user defaults.
  static constexpr std::string_view kLaunchAtLoginKey = "launchAtLogin";

  /// Layout in points: every row is a label beside a control; the last one is the button alone.
  static constexpr int kWidthPt = 420;
  static constexpr int kHeightPt = 310;
  static constexpr int kPaddingPt = 24;
  static constexpr int kRowSpacingPt = 16;
  static constexpr int kLabelWidthPt = 130;
  static constexpr int kControlWidthPt = 200;

  /// The rows of the pickers.
  static std::span<const Choice<std::string_view>> hotkeys();         ///< by name
  static std::span<const Choice<std::string_view>> inputLanguages();  ///< by Whisper language code
  static std::span<const Choice<bool>> outputs();                     ///< whether to translate

  /// Reads the configuration once for the initial selections. `onSaveAndRestart` is called after a
  /// save; it may close the window but not destroy this.
  SettingsView(ConfigManager config, const SettingsPorts& ports,
               std::function<void()> onSaveAndRestart);

  std::size_t selectedHotkeyIndex() const { return selectedHotkeyIndex_; }
  std::size_t selectedInputIndex() const { return selectedInputIndex_; }
  std::size_t selectedOutputIndex() const { return selectedOutputIndex_; }
  void selectHotkey(std::size_t index);
  void selectInput(std::size_t index);
  void selectOutput(std::size_t index);

  /// Whether the application starts at login. The first value is that of the user defaults, and every
  /// change is written there.
  bool launchAtLogin() const { return launchAtLogin_; }
  /// Registers or unregisters at once; if that fails, launchAtLogin() springs back.
  void setLaunchAtLogin(bool enabled);

  /// To be called each time the window is shown: takes over what the system says about launch at login.
  void appeared();

  /// Writes the configuration and hands over to `onSaveAndRestart`.
  void saveAndRestart();

  /// Called after launchAtLogin() has changed by itself: it sprang back, or the system said otherwise.
  void setOnChange(std::function<void()> onChange) { onChange_ = std::move(onChange); }

 private:
  bool changeLaunchAtLogin(bool enabled);
  bool requestLaunchAtLogin(bool enabled);
  void keepLaunchAtLogin(bool enabled);
  void changed() const;

  ConfigManager config_;
  const SettingsPorts ports_;
  const std::function<void()> onSaveAndRestart_;
  bool launchAtLogin_ = false;
  std::size_t selectedHotkeyIndex_ = 0;
  std::size_t selectedInputIndex_ = 0;
  std::size_t selectedOutputIndex_ = 0;
  std::function<void()> onChange_;
};

}  // namespace voxtrel
