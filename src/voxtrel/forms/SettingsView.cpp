#include "voxtrel/forms/SettingsView.h"

#include <algorithm>
#include <array>
#include <utility>

#include "common/base/Fatal.h"
#include "common/settings/HotkeyTable.h"
#include "voxtrel/platform/Preferences.h"

namespace voxtrel {
namespace {

constexpr std::string_view kWrittenModel = "large-v3";

constexpr auto kHotkeyChoices = [] {
  std::array<Choice<std::string_view>, kHotkeys.size()> choices{};
  std::transform(kHotkeys.begin(), kHotkeys.end(), choices.begin(), [](const Hotkey& hotkey) {
    return Choice<std::string_view>{hotkey.choice, hotkey.name};
  });
  return choices;
}();

constexpr std::array<Choice<std::string_view>, 23> kInputLanguageChoices = {{
    {"Auto-detect", "auto"},
    {"English", "en"},
    {"Chinese (Mandarin)", "zh"},
    {"Spanish", "es"},
    {"Hindi", "hi"},
    {"Arabic", "ar"},
    {"French", "fr"},
    {"Portuguese", "pt"},
    {"Russian", "ru"},
    {"Bengali", "bn"},
    {"Japanese", "ja"},
    {"German", "de"},
    {"Korean", "ko"},
    {"Italian", "it"},
    {"Turkish", "tr"},
    {"Vietnamese", "vi"},
    {"Polish", "pl"},
    {"Dutch", "nl"},
    {"Ukrainian", "uk"},
    {"Thai", "th"},
    {"Swedish", "sv"},
    {"Indonesian", "id"},
    {"Cantonese (v3 only)", "yue"},
}};

constexpr std::array<Choice<bool>, 2> kOutputChoices = {{
    {"Original language", false},
    {"Translate to English", true},
}};

/// The first row with this value; 0 if there is none.
template <typename Table, typename Value>
std::size_t indexOf(const Table& table, const Value& value) {
  const auto found = std::find_if(table.begin(), table.end(),
                                  [&value](const auto& row) { return row.value == value; });
  return found == table.end() ? 0 : static_cast<std::size_t>(found - table.begin());
}

template <typename Table>
std::size_t checkedIndex(const Table& table, std::size_t index) {
  if (index >= table.size()) fatalError("a picker chose a row outside its table");
  return index;
}

}  // namespace

std::span<const Choice<std::string_view>> SettingsView::hotkeys() {
  return kHotkeyChoices;
}

std::span<const Choice<std::string_view>> SettingsView::inputLanguages() {
  return kInputLanguageChoices;
}

std::span<const Choice<bool>> SettingsView::outputs() {
  return kOutputChoices;
}

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
  selectedHotkeyIndex_ = checkedIndex(kHotkeyChoices, index);
}

void SettingsView::selectInput(std::size_t index) {
  selectedInputIndex_ = checkedIndex(kInputLanguageChoices, index);
}

void SettingsView::selectOutput(std::size_t index) {
  selectedOutputIndex_ = checkedIndex(kOutputChoices, index);
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

/// False if it sprang back. Springing back is a change like any other, so it asks the desktop for the
/// opposite, once; if that fails too, the value stays.
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

/// Calls a copy, because the window may remove its observer during the call.
void SettingsView::changed() const {
  if (const auto onChange = onChange_) onChange();
}

}  // namespace voxtrel
