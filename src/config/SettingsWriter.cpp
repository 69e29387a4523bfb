#include "config/SettingsWriter.h"

#include <algorithm>
#include <cstddef>
#include <initializer_list>

#include "config/HotkeyTable.h"
#include "text/Lines.h"

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
  std::size_t size = 0;
  for (const std::string_view piece : pieces) size += piece.size();
  std::string text;
  text.reserve(size);
  for (const std::string_view piece : pieces) text += piece;
  return text;
}

}  // namespace

std::string updateOrInsert(std::string_view content, std::string_view section, std::string_view key,
                           std::string_view value) {
  const std::string header = joined({"[", section, "]"});
  const std::string line = joined({key, " = ", value});
  const Place place = placeFor(content, header, key);
  const std::string_view rest = content.substr(place.end);
  switch (place.kind) {
    case Place::Kind::inPlaceOfLine:
      return joined({content.substr(0, place.begin), line, rest});
    case Place::Kind::afterHeader:
      return joined({content.substr(0, place.end), "\n", line, rest});
    case Place::Kind::atEnd:
      break;
  }
  const bool endsInEmptyLine = content.empty() || content.ends_with('\n');
  return joined({content, endsInEmptyLine ? "\n" : "\n\n", header, "\n", line});
}

std::string withSettings(std::string_view content, const ModelSettings& settings) {
  const std::string model = joined({"\"", settings.model, "\""});
  const std::string language = joined({"\"", settings.language, "\""});
  const std::string hotkey = joined({"'", settings.hotkey, "'"});
  const std::string code = std::to_string(hotkeyCodeOf(settings.hotkey));
  std::string text = updateOrInsert(content, kModelSection, "whisper_model", model);
  text = updateOrInsert(text, kModelSection, "language", language);
  text = updateOrInsert(text, kModelSection, "translate", settings.translate ? "true" : "false");
  text = updateOrInsert(text, kAudioSection, "hotkey_code", code);
  return updateOrInsert(text, kAudioSection, "hotkey", hotkey);
}

}  // namespace voxtrel
