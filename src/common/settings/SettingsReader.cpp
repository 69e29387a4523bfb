#include "common/settings/SettingsReader.h"

#include <array>
#include <charconv>
#include <span>

#include "common/base/Lines.h"
#include "common/settings/ConfigManager.h"

namespace voxtrel {
namespace {

constexpr std::string_view kModelHeader = "[model]";
constexpr std::string_view kAudioHeader = "[audio]";
constexpr std::string_view kModelKey = "whisper_model";

struct Key {
  SettingKey key;
  std::string_view name;
};
constexpr std::array<Key, 3> kModelKeys = {{{SettingKey::language, "language"},
                                            {SettingKey::translate, "translate"},
                                            {SettingKey::model, kModelKey}}};
constexpr std::array<Key, 2> kAudioKeys = {
    {{SettingKey::hotkey, "hotkey"}, {SettingKey::hotkeyCode, "hotkey_code"}}};

constexpr std::string_view kDoubleQuote = "\"";
constexpr std::string_view kAnyQuote = "\"'";

using Apply = std::function<void(SettingKey key, std::string_view value)>;

/// What follows the key and an equals sign, anywhere in the line. The line must be trimmed; so is
/// the value.
std::optional<std::string_view> valueOf(std::string_view line, std::string_view key) {
  for (std::size_t at = line.find(key); at != std::string_view::npos; at = line.find(key, at + 1)) {
    const std::string_view rest = trimmedLeadingWhitespace(line.substr(at + key.size()));
    if (rest.starts_with('=')) return trimmedLeadingWhitespace(rest.substr(1));
  }
  return std::nullopt;
}

std::string stripped(std::string_view value, std::string_view quotes) {
  const std::size_t first = value.find_first_not_of(quotes);
  if (first == std::string_view::npos) return {};
  return std::string(value.substr(first, value.find_last_not_of(quotes) - first + 1));
}

/// Gives the line to the first of the keys that it sets.
void applyLine(std::string_view line, std::span<const Key> keys, const Apply& apply) {
  for (const auto& [key, name] : keys) {
    if (const auto value = valueOf(line, name)) return apply(key, *value);
  }
}

void applySetting(SettingKey key, std::string_view value, ModelSettings& settings) {
  switch (key) {
    case SettingKey::language:
      settings.language = stripped(value, kDoubleQuote);
      return;
    case SettingKey::translate:
      settings.translate = value == "true";
      return;
    case SettingKey::model:
      settings.model = stripped(value, kDoubleQuote);
      return;
    case SettingKey::hotkey:
      settings.hotkey = stripped(value, kAnyQuote);
      return;
    case SettingKey::hotkeyCode:
      // A name counts more than a code, unless it is the default's.
      const std::optional<std::int64_t> code = parseHotkeyCode(value);
      if (code && settings.hotkey == ModelSettings().hotkey)
        settings.hotkey = ConfigManager::hotkeyCodeToName(*code);
      return;
  }
}

}  // namespace

void forEachSetting(std::string_view text, const Apply& apply) {
  std::span<const Key> keys;
  forEachLine(text, [&](std::string_view piece) {
    const std::string_view line = trimmedWhitespace(piece);
    if (!line.starts_with('[')) return applyLine(line, keys, apply);
    keys = {};
    if (line == kModelHeader) keys = kModelKeys;
    if (line == kAudioHeader) keys = kAudioKeys;
  });
}

std::optional<std::int64_t> parseHotkeyCode(std::string_view value) {
  if (value.starts_with('+')) {
    value.remove_prefix(1);
    if (value.starts_with('-')) return std::nullopt;
  }
  std::int64_t number = 0;
  const char* end = value.data() + value.size();
  const auto [stop, error] = std::from_chars(value.data(), end, number);
  if (error != std::errc() || stop != end) return std::nullopt;
  return number;
}

ModelSettings parseSettings(std::string_view text) {
  ModelSettings settings;
  forEachSetting(text, [&settings](SettingKey key, std::string_view value) {
    applySetting(key, value, settings);
  });
  return settings;
}

std::string parseWhisperModel(std::string_view text) {
  std::optional<std::string> model;
  bool isInModelSection = false;
  forEachLine(text, [&](std::string_view piece) {
    if (model) return;
    const std::string_view line = trimmedWhitespace(piece);
    if (line.starts_with('[')) {
      isInModelSection = line == kModelHeader;
    } else if (isInModelSection) {
      if (const auto value = valueOf(line, kModelKey)) model = stripped(*value, kDoubleQuote);
    }
  });
  return model.value_or(ModelSettings().model);
}

}  // namespace voxtrel
