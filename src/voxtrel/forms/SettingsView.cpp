#include "voxtrel/forms/SettingsView.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include "voxtrel/forms/SettingsTables.h"
#include "voxtrel/platform/Preferences.h"

namespace voxtrel {
namespace {

constexpr std::string_view kWrittenModel = "large-v3";

/// The first row with this value; the first of all if there is none.
template <typename Table, typename Value>
std::size_t indexOf(const Table& table, const Value& value) {
  const auto found =
      std::ranges::find_if(table, [&value](const auto& row) { return row.value == value; });
  return found == table.end() ? 0 : static_cast<std::size_t>(found - table.begin());
}

template <typename Table>
std::size_t rowOf(const Table& table, std::size_t index) {
  if (index < table.size()) return index;
  std::fputs("voxtrel: a picker chose a row outside its table\n", stderr);
  std::abort();
}

}  // namespace

SettingsView::SettingsView(ConfigManager config, const SettingsPorts& ports,
                           std::function<void()> onSaveAndRestart)
    : config_(std::move(config)),
      ports_(ports),
      onSaveAndRestart_(std::move(onSaveAndRestart)),
      launchAtLogin_(ports.userDefaults.boolForKey(kLaunchAtLoginKey)) {
  const ModelSettings settings = config_.readSettings();
  selectedHotkeyIndex_ = indexOf(kHotkeyChoices, settings.hotkey);
  selectedInputIndex_ = indexOf(kInputLanguageChoices, settings.language);
  selectedOutputIndex_ = indexOf(kOutputChoices, settings.translate);
}

void SettingsView::selectHotkey(std::size_t index) {
  selectedHotkeyIndex_ = rowOf(kHotkeyChoices, index);
}

void SettingsView::selectInput(std::size_t index) {
  selectedInputIndex_ = rowOf(kInputLanguageChoices, index);
}

void SettingsView::selectOutput(std::size_t index) {
  selectedOutputIndex_ = rowOf(kOutputChoices, index);
}

void SettingsView::setLaunchAtLogin(bool enabled) {
  if (enabled == launchAtLogin_) return;
  if (!changeLaunchAtLogin(enabled)) changed();
}

void SettingsView::appeared() {
  const bool isEnabled = ports_.loginItem.isEnabled();
  if (isEnabled == launchAtLogin_) return;
  changeLaunchAtLogin(isEnabled);
  changed();
}

/// False if it sprang back. Springing back is a change like any other and asks the desktop for the
/// opposite, once: where that fails too, the value stays.
bool SettingsView::changeLaunchAtLogin(bool enabled) {
  keepLaunchAtLogin(enabled);
  if (requestLaunchAtLogin(enabled)) return true;
  keepLaunchAtLogin(!enabled);
  requestLaunchAtLogin(!enabled);
  return false;
}

bool SettingsView::requestLaunchAtLogin(bool enabled) {
  return enabled ? ports_.loginItem.enable() : ports_.loginItem.disable();
}

void SettingsView::keepLaunchAtLogin(bool enabled) {
  launchAtLogin_ = enabled;
  ports_.userDefaults.setBool(kLaunchAtLoginKey, enabled);
}

void SettingsView::saveAndRestart() {
  config_.writeSettings({.language = std::string(kInputLanguageChoices[selectedInputIndex_].value),
                         .translate = kOutputChoices[selectedOutputIndex_].value,
                         .hotkey = std::string(kHotkeyChoices[selectedHotkeyIndex_].value),
                         .model = std::string(kWrittenModel)});
  if (onSaveAndRestart_) onSaveAndRestart_();
}

/// Calls a copy: the window may take its observer away while it runs.
void SettingsView::changed() const {
  if (const auto onChange = onChange_) onChange();
}

}  // namespace voxtrel
