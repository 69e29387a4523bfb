#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace voxtrel {

/// The settings that the application edits and the engine obeys.
/// Thread: any, as a value.
struct ModelSettings {
  std::string language = "auto";     ///< Whisper language code; "auto" detects the language
  bool translate = false;            ///< true: to English; false: keep the spoken language
  std::string hotkey = "right_cmd";  ///< a hotkey's name as the file gives it, perhaps unknown
  std::string model = "large-v3";    ///< Whisper model; also names its folder of weights

  bool operator==(const ModelSettings&) const = default;
};

/// The text of a settings file; defaults for what it leaves out. A lenient reader of lines, not of
/// TOML: there are no comments, a key is found anywhere in a line, nothing is unescaped. If a key is
/// there twice, the last one counts.
ModelSettings parseSettings(std::string_view text);

/// The model's name only. If it is there twice, the first one counts, unlike in parseSettings.
std::string parseWhisperModel(std::string_view text);

/// The keys that parseSettings knows.
enum class SettingKey { language, translate, model, hotkey, hotkeyCode };

/// Calls `apply` for each line that parseSettings reads, in order. `value` is the part of `text` after
/// the equals sign, without the blanks around it but with its quotes.
void forEachSetting(std::string_view text,
                    const std::function<void(SettingKey key, std::string_view value)>& apply);

/// The number that a value of SettingKey::hotkeyCode stands for: decimal digits, perhaps with a sign.
std::optional<std::int64_t> parseHotkeyCode(std::string_view value);

}  // namespace voxtrel
