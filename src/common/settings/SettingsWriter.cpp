#include "common/settings/SettingsWriter.h"

#include <algorithm>
#include <cstddef>
#include <initializer_list>

#include "common/base/Lines.h"
#include "common/settings/ConfigManager.h"

namespace voxtrel {
namespace {

constexpr std::string_view kModelSection = "model";
constexpr std::string_view kAudioSection = "audio";

/// Where the new line goes.
struct Place {
  enum class Kind { atEnd, afterHeader, inPlaceOfLine };
  Kind kind = Kind::atEnd;
  std::size_t begin = 0;  ///< of the header or the line
  std::size_t end = 0;    ///< without its line feed
};

bool setsKey(std::string_view trimmedLine, std::string_view key) {
  const std::size_t equals = trimmedLine.find('=');
  return equals != std::string_view::npos &&
         trimmedWhitespace(trimmedLine.substr(0, equals)) == key;
}

Place placeFor(std::string_view content, std::string_view header, std::string_view key) {
  Place place;
  bool isInSection = false;
  for (std::size_t begin = 0; begin <= content.size();) {
    const std::size_t end = std::min(content.find('\n', begin), content.size());
    const std::string_view line = trimmedWhitespace(content.substr(begin, end - begin));
    if (line.starts_with('[')) {
      isInSection = line == header;
      if (isInSection) place = {Place::Kind::afterHeader, begin, end};
    } else if (isInSection && setsKey(line, key)) {
      return {Place::Kind::inPlaceOfLine, begin, end};
    }
    begin = end + 1;
  }
  return place;
}

std::string joined(std::initializer_list<std::string_view> pieces) {
  std::string text;
  for (const std::string_view piece : pieces) text += piece;
  return text;
}

/// Space for all five lines and their headers, so that a large text is not moved to grow.
std::size_t maxAddedBytes(const ModelSettings& settings) {
  constexpr std::size_t kKeysAndHeaders = 160;
  return kKeysAndHeaders + settings.model.size() + settings.language.size() +
         settings.hotkey.size();
}

void update(std::string& content, std::string_view section, std::string_view key,
            std::string_view value) {
  const std::string header = joined({"[", section, "]"});
  const std::string line = joined({key, " = ", value});
  const Place place = placeFor(content, header, key);
  switch (place.kind) {
    case Place::Kind::inPlaceOfLine:
      content.replace(place.begin, place.end - place.begin, line);
      return;
    case Place::Kind::afterHeader:
      content.insert(place.end, joined({"\n", line}));
      return;
    case Place::Kind::atEnd:
      break;
  }
  const bool endsInEmptyLine = content.empty() || content.ends_with('\n');
  content += joined({endsInEmptyLine ? "\n" : "\n\n", header, "\n", line});
}

}  // namespace

std::string updateOrInsert(std::string_view content, std::string_view section, std::string_view key,
                           std::string_view value) {
  std::string text(content);
  update(text, section, key, value);
  return text;
}

std::string withSettings(std::string_view content, const ModelSettings& settings) {
  std::string text;
  text.reserve(content.size() + maxAddedBytes(settings));
  text = content;
  update(text, kModelSection, "whisper_model", joined({"\"", settings.model, "\""}));
  update(text, kModelSection, "language", joined({"\"", settings.language, "\""}));
  update(text, kModelSection, "translate", settings.translate ? "true" : "false");
  update(text, kAudioSection, "hotkey_code",
         std::to_string(ConfigManager::hotkeyNameToCode(settings.hotkey)));
  update(text, kAudioSection, "hotkey", joined({"'", settings.hotkey, "'"}));
  return text;
}

}  // namespace voxtrel
