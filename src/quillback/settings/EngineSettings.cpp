#include "quillback/settings/EngineSettings.h"

#include <toml++/toml.h>

#include <array>
#include <optional>

#include "quillback/settings/SettingsFile.h"

namespace voxtrel::quillback {
namespace {

using Insert = EngineSettings::Insert;

/// Reads the keys of one parsed file, collecting mistakes.
/// Thread: one.  Borrows: the tables.
class Reader {
 public:
  explicit Reader(const toml::table& root) : root_(root) {}

  SettingsReading read() && {
    auto& [settings, errors] = reading_;
    settings.model = text("model", "whisper_model").value_or(settings.model);
    settings.language = text("model", "language").value_or(settings.language);
    readTranslate();
    readHotkey();
    readInsert();
    return std::move(reading_);
  }

 private:
  /// The value, if the section and the key are there. A section that is none is reported once.
  const toml::node* find(std::string_view section, std::string_view key) {
    const toml::node* node = root_.get(section);
    if (node == nullptr) return nullptr;
    if (const toml::table* table = node->as_table()) return table->get(key);
    if (std::string(section) != badSection_) {
      complain(*node, std::string(section) + " must be a section");
      badSection_ = section;
    }
    return nullptr;
  }

  std::optional<std::string> text(std::string_view section, std::string_view key) {
    const toml::node* node = find(section, key);
    if (node == nullptr) return std::nullopt;
    auto value = node->value_exact<std::string>();
    if (value && !value->empty()) return value;
    complain(*node, std::string(key) + " must be a text in quotes");
    return std::nullopt;
  }

  void readTranslate() {
    const toml::node* node = find("model", "translate");
    if (node == nullptr) return;
    const auto value = node->value_exact<bool>();
    if (value) {
      reading_.settings.translate = *value;
    } else {
      complain(*node, "translate must be true or false");
    }
  }

  void readHotkey() {
    if (const toml::node* node = find("audio", "hotkey_code")) {
      const auto code = node->value_exact<std::int64_t>();
      const auto hotkey = code ? hotkeyWithCode(*code) : std::nullopt;
      if (hotkey) {
        reading_.settings.hotkey = *hotkey;
        return;
      }
      complain(*node, "hotkey_code is not the number of a key that can be held");
    }
    if (const toml::node* node = find("audio", "hotkey")) {
      const auto name = node->value_exact<std::string>();
      const auto hotkey = name ? hotkeyNamed(*name) : std::nullopt;
      if (hotkey) {
        reading_.settings.hotkey = *hotkey;
      } else {
        complain(*node, "hotkey is not the name of a key that can be held");
      }
    }
  }

  void readInsert() {
    const toml::node* node = find("output", "insert");
    if (node == nullptr) return;
    const auto value = node->value_exact<std::string>().value_or("");
    for (const auto& [name, insert] : kInserts) {
      if (value == name) {
        reading_.settings.insert = insert;
        return;
      }
    }
    complain(*node, R"(insert must be "type", "clipboard" or "none")");
  }

  void complain(const toml::node& node, const std::string& what) {
    reading_.errors.push_back(settingsError(node.source().begin.line, what));
  }

  static constexpr std::array<std::pair<std::string_view, Insert>, 3> kInserts = {
      {{"type", Insert::type}, {"clipboard", Insert::clipboard}, {"none", Insert::none}}};

  const toml::table& root_;
  std::string badSection_;
  SettingsReading reading_;
};

}  // namespace

SettingsReading parseSettings(std::string_view text) {
  try {
    return Reader(toml::parse(text)).read();
  } catch (const toml::parse_error& error) {
    // The library's own words quote the file, whose text must not pass for a line of the engine's.
    return {{}, {settingsError(error.source().begin.line, "this is not TOML; using the defaults")}};
  }
}

SettingsReading readSettings(const std::string& path) {
  const SettingsFile file = readSettingsFile(path);
  if (!file.error.empty()) return {{}, {file.error}};
  return parseSettings(file.text);
}

std::string settingsPath(const std::string& home) {
  return home + "/.config/quillback/config.toml";
}

}  // namespace voxtrel::quillback
