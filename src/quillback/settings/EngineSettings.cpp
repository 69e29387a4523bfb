#include "quillback/settings/EngineSettings.h"

#include <algorithm>
#include <map>
#include <optional>

#include "common/settings/SettingsReader.h"
#include "common/settings/TextFile.h"
#include "quillback/settings/OwnSettings.h"

namespace voxtrel::quillback {
namespace {

constexpr std::size_t kMaxBytes = 1 << 20;

/// The line, as editors count, in which `part` of `text` begins.
std::size_t lineOf(std::string_view text, std::string_view part) {
  const auto before = text.substr(0, static_cast<std::size_t>(part.data() - text.data()));
  return 1 + static_cast<std::size_t>(std::ranges::count(before, '\n'));
}

/// Takes over what the application reads from the same text.
void readShared(std::string_view text, SettingsReading& reading) {
  const ModelSettings shared = parseSettings(text);
  EngineSettings& settings = reading.settings;
  settings.model = shared.model;
  settings.language = shared.language;
  settings.translate = shared.translate;
  const Hotkey* hotkey = hotkeyNamed(shared.hotkey);
  if (hotkey != nullptr) settings.hotkey = *hotkey;

  std::map<SettingKey, std::string_view> last;
  forEachSetting(text, [&last](SettingKey key, std::string_view value) { last[key] = value; });
  const auto complainIf = [&](SettingKey key, auto isWrong, std::string_view what) {
    const auto found = last.find(key);
    if (found == last.end() || !isWrong(found->second)) return;
    reading.errors.push_back(settingsErrorLine(lineOf(text, found->second), what));
  };
  complainIf(
      SettingKey::translate, [](auto value) { return value != "true" && value != "false"; },
      "translate must be true or false");
  complainIf(
      SettingKey::hotkeyCode,
      [](auto value) {
        const std::optional<std::int64_t> code = parseHotkeyCode(value);
        return !code || hotkeyWithCode(*code) == nullptr;
      },
      "hotkey_code is not the number of a key that can be held");
  complainIf(
      SettingKey::hotkey, [hotkey](auto) { return hotkey == nullptr; },
      "hotkey is not the name of a key that can be held");
}

}  // namespace

SettingsReading parseEngineSettings(std::string_view text) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  SettingsReading reading;
  if (text.starts_with(kByteOrderMark)) {
    reading.errors.push_back(settingsErrorLine(1, "the byte order mark hides what this line says"));
  }
  readShared(text, reading);
  readOwnSettings(text, reading);
  return reading;
}

SettingsReading readEngineSettings(const std::string& path) {
  const auto text = readTextFile(path, kMaxBytes);
  if (text) return parseEngineSettings(*text);
  if (text.error().isMissing) return {};
  return {{}, {settingsErrorLine(0, text.error().reason + "; using the defaults")}};
}

}  // namespace voxtrel::quillback
