#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <optional>
#include <ostream>
#include <string>

#include "common/settings/ConfigManager.h"
#include "common/settings/SettingsReader.h"
#include "support/Blanks.h"
#include "support/ConfigWords.h"
#include "support/IcuText.h"
#include "support/RandomText.h"

namespace voxtrel {
namespace {

icu::UnicodeString stripped(icu::UnicodeString text, const icu::UnicodeString& quotes) {
  while (!text.isEmpty() && quotes.indexOf(text[0]) >= 0) text.remove(0, 1);
  while (!text.isEmpty() && quotes.indexOf(text[text.length() - 1]) >= 0) {
    text.truncate(text.length() - 1);
  }
  return text;
}

/// The rules of the settings file, written with ICU's regular expressions.
/// Thread: one.  Owns: its patterns.  Borrows: nothing.
/// Fails by: an exception, which fails the test.
class FileRules {
 public:
  ModelSettings settingsOf(std::string_view text) {
    ModelSettings settings;
    icu::UnicodeString section;
    for (const icu::UnicodeString& piece : linesOf(wide(text))) {
      const icu::UnicodeString line = trimmed(piece);
      if (line.startsWith(u"[")) {
        section = line;
      } else if (section == u"[model]") {
        readModel(line, settings);
      } else if (section == u"[audio]") {
        readAudio(line, settings);
      }
    }
    return settings;
  }

  std::string whisperModelOf(std::string_view text) {
    bool isInModel = false;
    for (const icu::UnicodeString& piece : linesOf(wide(text))) {
      const icu::UnicodeString line = trimmed(piece);
      if (line.startsWith(u"[")) {
        isInModel = line == u"[model]";
        continue;
      }
      if (!isInModel) continue;
      if (const auto value = model_.find(line, 1)) return narrow(stripped(trimmed(*value), u"\""));
    }
    return "large-v3";
  }

 private:
  void readModel(const icu::UnicodeString& line, ModelSettings& settings) {
    if (const auto language = language_.find(line, 1)) {
      settings.language = narrow(stripped(trimmed(*language), u"\""));
    } else if (const auto translate = translate_.find(line, 1)) {
      settings.translate = trimmed(*translate) == u"true";
    } else if (const auto model = model_.find(line, 1)) {
      settings.model = narrow(stripped(trimmed(*model), u"\""));
    }
  }

  void readAudio(const icu::UnicodeString& line, ModelSettings& settings) {
    if (const auto hotkey = hotkey_.find(line, 1)) {
      settings.hotkey = narrow(stripped(trimmed(*hotkey), u"\"'"));
    } else if (const auto code = code_.find(line, 1)) {
      const icu::UnicodeString digits = trimmed(*code);
      if (!integer_.matches(digits) || settings.hotkey != "right_cmd") return;
      errno = 0;
      const long long number = std::strtoll(narrow(digits).c_str(), nullptr, 10);
      if (errno != ERANGE) settings.hotkey = ConfigManager::hotkeyCodeToName(number);
    }
  }

  IcuPattern language_{R"(language\s*=\s*(.*))"};
  IcuPattern translate_{R"(translate\s*=\s*(.*))"};
  IcuPattern model_{R"(whisper_model\s*=\s*(.*))"};
  IcuPattern hotkey_{R"(hotkey\s*=\s*(.*))"};
  IcuPattern code_{R"(hotkey_code\s*=\s*(.*))"};
  IcuPattern integer_{"[+-]?[0-9]+"};
};

void expectTheSame(FileRules& rules, const std::string& text) {
  ASSERT_EQ(parseSettings(text), rules.settingsOf(text)) << testing::PrintToString(text);
  ASSERT_EQ(parseWhisperModel(text), rules.whisperModelOf(text)) << testing::PrintToString(text);
}

TEST(SettingsBesideIcu, AreTheSameInRandomFiles) {
  FileRules rules;
  RandomText random(31);
  int telling = 0;
  for (int round = 0; round < 20'000; ++round) {
    const std::string text = random.ofWords(kConfigWords, 60);
    ASSERT_NO_FATAL_FAILURE(expectTheSame(rules, text));
    telling += parseSettings(text) == ModelSettings() ? 0 : 1;
  }
  EXPECT_GT(telling, 4'000);
}

/// Lines that nearly always hold a key and an equals sign, with whitespace of all kinds around
/// them.
TEST(SettingsBesideIcu, AreTheSameInRandomLinesWithEveryWhitespace) {
  FileRules rules;
  RandomText random(32);
  constexpr std::array kKeys = {"language"sv, "translate"sv, "whisper_model"sv, "hotkey"sv,
                                "hotkey_code"sv};
  int telling = 0;
  for (int round = 0; round < 40'000; ++round) {
    const auto blanks = [&random] { return random.ofWords(kWhitespace, 2); };
    std::string text = round % 2 == 0 ? "[model]\n" : "[audio]\n";
    for (std::size_t line = random.below(3) + 1; line > 0; --line) {
      text += random.ofWords(kConfigWords, 1) + blanks() + std::string(kKeys[random.below(5)]);
      text += blanks() + (random.below(8) == 0 ? "" : "=") + blanks();
      text += random.ofWords(kConfigWords, 2) + blanks() + "\n";
    }
    ASSERT_NO_FATAL_FAILURE(expectTheSame(rules, text));
    telling += parseSettings(text) == ModelSettings() ? 0 : 1;
  }
  EXPECT_GT(telling, 12'000);
}

TEST(SettingsBesideIcu, AreTheSameWithEachCharacterOfTheBasicPlaneInEveryPlace) {
  FileRules rules;
  int found = 0;
  for (UChar32 character = 0; character < 0x10000; ++character) {
    if (character >= 0xD800 && character <= 0xDFFF) continue;  // surrogates
    const std::string c = utf8Of(character);
    const std::string text = "[model]\n" + c + "whisper_model" + c + "=" + c + "m" + c;
    ASSERT_NO_FATAL_FAILURE(expectTheSame(rules, text));
    found += parseWhisperModel(text) == "m" ? 1 : 0;
  }
  EXPECT_EQ(found, 18);  // the tab and category Zs, no more
}

TEST(SettingsBesideIcu, HaveTheSameWholeNumbersAsCodes) {
  constexpr std::array kDigits = {"9"sv,  "6"sv,        "96"sv, "97"sv,
                                  "98"sv, "0"sv,        "0"sv,  "+"sv,
                                  "-"sv,  "\xD9\xA3"sv, " "sv,  "9223372036854775807"sv};
  FileRules rules;
  RandomText random(33);
  int known = 0;
  for (int round = 0; round < 20'000; ++round) {
    const std::string text = "[audio]\nhotkey_code = " + random.ofWords(kDigits, 4);
    ASSERT_NO_FATAL_FAILURE(expectTheSame(rules, text));
    known += parseSettings(text).hotkey == "right_cmd" ? 0 : 1;
  }
  EXPECT_GT(known, 1'000);
}

}  // namespace
}  // namespace voxtrel
