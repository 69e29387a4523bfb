#include "quillback/settings/EngineSettings.h"

#include <toml++/toml.h>

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <utility>

#include "common/settings/SettingsReader.h"
#include "common/settings/TextFile.h"

namespace voxtrel::quillback {
namespace {

using Insert = EngineSettings::Insert;

constexpr std::size_t kMaxBytes = 1 << 20;
constexpr std::array<std::pair<std::string_view, Insert>, 3> kInserts = {
    {{"type", Insert::type}, {"clipboard", Insert::clipboard}, {"none", Insert::none}}};

/// `line` counts from 1; 0 means the whole file. `what` never quotes the file, whose text must not look
/// like one of the engine's own lines.
std::string errorLine(std::size_t line, std::string_view what) {
  std::string text = "[quillback] ERROR in ~/.config/quillback/config.toml";
  if (line > 0) text += ", line " + std::to_string(line);
  return text.append(": ").append(what);
}

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
    reading.errors.push_back(errorLine(lineOf(text, found->second), what));
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

void readInsert(const toml::table& file, SettingsReading& reading) {
  const toml::node* section = file.get("output");
  if (section == nullptr) return;
  const auto complain = [&reading](const toml::node& node, std::string_view what) {
    reading.errors.push_back(errorLine(node.source().begin.line, what));
  };
  if (!section->is_table()) return complain(*section, "output must be a section");
  const toml::node* node = section->as_table()->get("insert");
  if (node == nullptr) return;
  const auto value = node->value_exact<std::string>().value_or("");
  const auto* found = std::ranges::find(kInserts, value, &decltype(kInserts)::value_type::first);
  if (found == kInserts.end()) {
    return complain(*node, R"(insert must be "type", "clipboard" or "none")");
  }
  reading.settings.insert = found->second;
}

void readOwn(std::string_view text, SettingsReading& reading) {
  try {
    readInsert(toml::parse(text), reading);
  } catch (const toml::parse_error& error) {
    reading.errors.push_back(
        errorLine(error.source().begin.line, "this is not TOML; [output] keeps its default"));
  }
}

}  // namespace

SettingsReading parseEngineSettings(std::string_view text) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  SettingsReading reading;
  if (text.starts_with(kByteOrderMark)) {
    reading.errors.push_back(errorLine(1, "the byte order mark hides what this line says"));
  }
  readShared(text, reading);
  readOwn(text, reading);
  return reading;
}

SettingsReading readEngineSettings(const std::string& path) {
  const auto text = readTextFile(path, kMaxBytes);
  if (text) return parseEngineSettings(*text);
  if (text.error().isMissing) return {};
  return {{}, {errorLine(0, text.error().reason + "; using the defaults")}};
}

}  // namespace voxtrel::quillback
