#include "quillback/settings/OwnSettings.h"

#include <toml++/toml.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <utility>

namespace voxtrel::quillback {
namespace {

using Insert = EngineSettings::Insert;
using PasteKey = EngineSettings::PasteKey;

constexpr std::array<std::pair<std::string_view, Insert>, 3> kInserts = {
    {{"type", Insert::type}, {"clipboard", Insert::clipboard}, {"none", Insert::none}}};
constexpr std::array<std::pair<std::string_view, PasteKey>, 3> kPasteKeys = {
    {{"ctrl+v", PasteKey::ctrlV},
     {"ctrl+shift+v", PasteKey::ctrlShiftV},
     {"shift+insert", PasteKey::shiftInsert}}};

/// A table of the file, whose keys are read one by one.
/// Thread: one.  Borrows: the file, the list of errors.
class Section {
 public:
  /// Takes a value over; returns the part of it that cannot be used, or null.
  using TakeOver = std::function<const toml::node*(const toml::node& value)>;

  Section(const toml::table& file, std::string_view name, std::vector<std::string>& errors)
      : errors_(errors) {
    const toml::node* section = file.get(name);
    if (section == nullptr) return;
    keys_ = section->as_table();
    if (keys_ == nullptr) complain(*section, std::string(name).append(" must be a section"));
  }

  /// `what` is the complaint about a value that cannot be used.
  void read(std::string_view key, std::string_view what, const TakeOver& takeOver) {
    const toml::node* value = keys_ == nullptr ? nullptr : keys_->get(key);
    if (value == nullptr) return;
    if (const toml::node* fault = takeOver(*value)) complain(*fault, what);
  }

 private:
  void complain(const toml::node& fault, std::string_view what) {
    errors_.push_back(settingsErrorLine(fault.source().begin.line, what));
  }

  const toml::table* keys_ = nullptr;
  std::vector<std::string>& errors_;
};

bool isModelName(std::string_view name) {
  constexpr std::string_view kAllowed =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789.-_";
  return !name.empty() && !name.starts_with('.') &&
         name.find_first_not_of(kAllowed) == std::string_view::npos;
}

std::optional<std::string> textOf(const toml::node& node, std::size_t maxBytes) {
  auto text = node.value_exact<std::string>();
  if (text && text->size() > maxBytes) return std::nullopt;
  return text;
}

std::optional<std::int64_t> numberOf(const toml::node& node, std::int64_t min, std::int64_t max) {
  const auto number = node.value_exact<std::int64_t>();
  return number && min <= *number && *number <= max ? number : std::nullopt;
}

/// Takes over the choice that the value names.
template <typename Choices, typename Choice>
const toml::node* readChoice(const toml::node& node, const Choices& choices, Choice& choice) {
  const auto name = node.value_exact<std::string>().value_or("");
  const auto* found = std::ranges::find(choices, name, &Choices::value_type::first);
  if (found == choices.end()) return &node;
  choice = found->second;
  return nullptr;
}

const toml::node* readWords(const toml::node& node, std::vector<std::string>& words) {
  constexpr std::size_t kMaxWords = 100;
  constexpr std::size_t kMaxWordBytes = 60;
  const toml::array* list = node.as_array();
  if (list == nullptr || list->size() > kMaxWords) return &node;
  std::vector<std::string> read;
  for (const toml::node& element : *list) {
    auto word = textOf(element, kMaxWordBytes);
    if (!word || word->empty()) return &element;
    read.push_back(std::move(*word));
  }
  words = std::move(read);
  return nullptr;
}

const toml::node* readRules(const toml::node& node, std::vector<TextRule>& rules) {
  constexpr std::size_t kMaxRules = 200;
  const toml::table* table = node.as_table();
  if (table == nullptr || table->size() > kMaxRules) return &node;
  std::vector<TextRule> read;
  for (const auto& [key, value] : *table) {
    const std::string_view phrase = key.str();
    auto replacement = value.value_exact<std::string>();
    if (!replacement || phrase.find_first_not_of(" \t") == std::string_view::npos) return &value;
    read.push_back({std::string(phrase), std::move(*replacement)});
  }
  rules = std::move(read);
  return nullptr;
}

void readEngine(Section section, EngineSettings& settings) {
  section.read("model", R"(the engine's model must be a name of letters, digits, ".", "-" and "_")",
               [&](const toml::node& node) {
                 const auto name = node.value_exact<std::string>();
                 if (!name || !isModelName(*name)) return &node;
                 settings.engineModel = *name;
                 return static_cast<const toml::node*>(nullptr);
               });
  section.read("unload_after", "unload_after must be a number of seconds from 1 to 31536000",
               [&](const toml::node& node) {
                 constexpr std::int64_t kYear = 31'536'000;
                 const auto number = numberOf(node, 1, kYear);
                 if (!number) return &node;
                 settings.unloadAfter = std::chrono::seconds(*number);
                 return static_cast<const toml::node*>(nullptr);
               });
}

void readModel(Section section, EngineSettings& settings) {
  section.read("prompt", "prompt must be a text of at most 1000 bytes",
               [&](const toml::node& node) {
                 constexpr std::size_t kMaxPromptBytes = 1000;
                 auto text = textOf(node, kMaxPromptBytes);
                 if (!text) return &node;
                 settings.prompt = std::move(*text);
                 return static_cast<const toml::node*>(nullptr);
               });
  section.read("words", "words must be a list of at most 100 words, each of 1 to 60 bytes",
               [&](const toml::node& node) { return readWords(node, settings.words); });
  section.read("threads", "threads must be a number from 0 to 256", [&](const toml::node& node) {
    constexpr std::int64_t kMaxThreads = 256;
    const auto number = numberOf(node, 0, kMaxThreads);
    if (!number) return &node;
    settings.threads = static_cast<int>(*number);
    return static_cast<const toml::node*>(nullptr);
  });
}

void readOutput(Section section, EngineSettings& settings) {
  section.read("insert", R"(insert must be "type", "clipboard" or "none")",
               [&](const toml::node& node) { return readChoice(node, kInserts, settings.insert); });
  section.read(
      "paste", R"(paste must be "ctrl+v", "ctrl+shift+v" or "shift+insert")",
      [&](const toml::node& node) { return readChoice(node, kPasteKeys, settings.paste); });
  section.read("notify_text", "notify_text must be true or false", [&](const toml::node& node) {
    const auto value = node.value_exact<bool>();
    if (!value) return &node;
    settings.notifyText = *value;
    return static_cast<const toml::node*>(nullptr);
  });
  section.read("replace", "replace must be a table of at most 200 phrases, each with its text",
               [&](const toml::node& node) { return readRules(node, settings.replace); });
}

}  // namespace

std::string settingsErrorLine(std::size_t line, std::string_view what) {
  std::string text = "[quillback] ERROR in ~/.config/quillback/config.toml";
  if (line > 0) text += ", line " + std::to_string(line);
  return text.append(": ").append(what);
}

void readOwnSettings(std::string_view text, SettingsReading& reading) {
  try {
    const toml::table file = toml::parse(text);
    readEngine({file, "engine", reading.errors}, reading.settings);
    readModel({file, "model", reading.errors}, reading.settings);
    readOutput({file, "output", reading.errors}, reading.settings);
  } catch (const toml::parse_error& error) {
    reading.errors.push_back(
        settingsErrorLine(error.source().begin.line,
                          "this is not TOML; all but whisper_model, language, translate and the "
                          "hotkey keep their defaults"));
  }
}

}  // namespace voxtrel::quillback
