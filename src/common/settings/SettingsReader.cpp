#include "common/settings/SettingsReader.h"

#include <charconv>
#include <cstdint>
#include <optional>

#include "common/base/Lines.h"
#include "common/settings/HotkeyTable.h"

namespace voxtrel {
namespace {

constexpr std::string_view kModelSection = "[model]";
constexpr std::string_view kAudioSection = "[audio]";
constexpr std::string_view kModelKey = "whisper_model";
constexpr std::string_view kDoubleQuote = "\"";
constexpr std::string_view kAnyQuote = "\"'";

/// What follows the key, an equals sign and the whitespace around it, wherever in the line they
/// are. The line is trimmed, and so is the value.
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

std::optional<std::int64_t> integerOf(std::string_view value) {
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

void readModelLine(std::string_view line, ModelSettings& settings) {
  if (const auto language = valueOf(line, "language")) {
    settings.language = stripped(*language, kDoubleQuote);
  } else if (const auto translate = valueOf(line, "translate")) {
    settings.translate = *translate == "true";
  } else if (const auto model = valueOf(line, kModelKey)) {
    settings.model = stripped(*model, kDoubleQuote);
  }
}

void readAudioLine(std::string_view line, ModelSettings& settings) {
  if (const auto hotkey = valueOf(line, "hotkey")) {
    settings.hotkey = stripped(*hotkey, kAnyQuote);
  } else if (const auto code = valueOf(line, "hotkey_code")) {
    // A name beats a code, unless it is the default's name.
    const std::optional<std::int64_t> number = integerOf(*code);
    if (number && settings.hotkey == ModelSettings().hotkey)
      settings.hotkey = hotkeyNameOf(*number);
  }
}

}  // namespace

ModelSettings parseSettings(std::string_view text) {
  ModelSettings settings;
  std::string_view section;
  forEachLine(text, [&](std::string_view piece) {
    const std::string_view line = trimmedWhitespace(piece);
    if (line.starts_with('[')) {
      section = line;
    } else if (section == kModelSection) {
      readModelLine(line, settings);
    } else if (section == kAudioSection) {
      readAudioLine(line, settings);
    }
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
      isInModelSection = line == kModelSection;
    } else if (isInModelSection) {
      if (const auto value = valueOf(line, kModelKey)) model = stripped(*value, kDoubleQuote);
    }
  });
  return model.value_or(ModelSettings().model);
}

}  // namespace voxtrel
