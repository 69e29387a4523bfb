// Any bytes as a settings file: nothing breaks, and the values are as the reader promises.

#include <string>
#include <string_view>

#include "common/base/Lines.h"
#include "common/base/Utf8.h"
#include "common/settings/SettingsReader.h"
#include "fuzz/FuzzEntry.h"

using namespace voxtrel;

namespace {

bool isStripped(std::string_view value, std::string_view quotes) {
  return value.empty() || (quotes.find(value.front()) == std::string_view::npos &&
                           quotes.find(value.back()) == std::string_view::npos);
}

bool isOneLine(std::string_view value) {
  int lines = 0;
  forEachLine(value, [&lines](std::string_view) { ++lines; });
  return lines == 1;
}

void requireWellFormed(const ModelSettings& settings, bool isFileUtf8) {
  require(isStripped(settings.language, "\""), "a language has no quotes at its ends");
  require(isStripped(settings.model, "\""), "a model has no quotes at its ends");
  require(isStripped(settings.hotkey, "\"'"), "a hotkey has no quotes at its ends");
  for (const std::string& value : {settings.language, settings.model, settings.hotkey}) {
    require(isOneLine(value), "a value is part of one line");
    require(isValidUtf8(value) || !isFileUtf8, "a value of a UTF-8 file is UTF-8");
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(data, data + size);
  const ModelSettings settings = parseSettings(text);
  requireWellFormed(settings, isValidUtf8(text));
  if (text.find('=') == std::string::npos) {
    require(settings == ModelSettings(), "without an equals sign there are only defaults");
  }

  const ModelSettings last = parseSettings(text + "\n[model]\nwhisper_model = last\n[end]\n");
  ModelSettings expected = settings;
  expected.model = "last";
  require(last == expected, "the last model counts, and nothing else changes");
  require(parseWhisperModel("[model]\nwhisper_model = first\n" + text) == "first",
          "the first model counts at start-up");
  require(parseWhisperModel(text + "\n[model]\nwhisper_model = \"large-v3\"") ==
              parseWhisperModel(text),
          "a later model says nothing at start-up");
  return 0;
}
