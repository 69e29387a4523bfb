#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <ostream>
#include <string>
#include <vector>

#include "common/base/Lines.h"
#include "common/settings/SettingsReader.h"
#include "common/settings/SettingsWriter.h"
#include "support/ConfigWords.h"
#include "support/RandomText.h"

namespace voxtrel {
namespace {

using Lines = std::vector<std::string>;

Lines linesOf(const std::string& text) {
  Lines lines(1);
  for (const char byte : text) {
    if (byte == '\n') {
      lines.emplace_back();
    } else {
      lines.back() += byte;
    }
  }
  return lines;
}

/// The same rule, over a list of lines.
std::string updatedByLines(const std::string& content, const std::string& section,
                           const std::string& key, const std::string& value) {
  Lines lines = linesOf(content);
  const std::string header = "[" + section + "]";
  const std::string newLine = key + " = " + value;
  bool isIn = false, isSeen = false, isReplaced = false;
  std::size_t headerIndex = 0;
  for (std::size_t i = 0; i < lines.size() && !isReplaced; ++i) {
    const std::string line(trimmedWhitespace(lines[i]));
    if (line == header) {
      isIn = isSeen = true;
      headerIndex = i;
    } else if (!line.empty() && line[0] == '[') {
      isIn = false;
    } else if (isIn && line.find('=') != std::string::npos &&
               trimmedWhitespace(std::string_view(line).substr(0, line.find('='))) == key) {
      lines[i] = newLine;
      isReplaced = true;
    }
  }
  if (!isReplaced && isSeen) {
    lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(headerIndex) + 1, newLine);
  } else if (!isReplaced) {
    if (!lines.back().empty()) lines.emplace_back();
    lines.push_back(header);
    lines.push_back(newLine);
  }
  std::string joined = lines[0];
  for (std::size_t i = 1; i < lines.size(); ++i) joined += "\n" + lines[i];
  return joined;
}

constexpr std::array kLanguages = {"auto"sv, "en"sv, "yue"sv, "zh"sv, ""sv, "de-AT"sv};
constexpr std::array kHotkeys = {"right_cmd"sv, "right_shift"sv,  "shift+\\"sv, "f5"sv,
                                 "f8"sv,        "right_option"sv, "unknown"sv,  ""sv};
constexpr std::array kModels = {"large-v3"sv, "medium"sv, "a b"sv, " "sv, "[model]"sv, "\\"sv};

template <typename Words>
std::string one(RandomText& random, const Words& words) {
  return std::string(words[random.below(words.size())]);
}

ModelSettings randomSettings(RandomText& random) {
  return {one(random, kLanguages), random.below(2) == 0, one(random, kHotkeys),
          one(random, kModels)};
}

TEST(SettingsWriterProperty, EveryUpdateIsTheSameAsOverAListOfLines) {
  RandomText random(41);
  int replaced = 0, inserted = 0, appended = 0;
  constexpr std::array kKeys = {"language"sv, "translate"sv, "whisper_model"sv, "hotkey"sv,
                                "hotkey_code"sv};
  for (int round = 0; round < 20'000; ++round) {
    std::string text = random.ofWords(kConfigWords, 60);
    if (round % 3 == 0) text = random.damaged(text);
    const std::string section = random.below(2) == 0 ? "model" : "audio";
    const std::string key = one(random, kKeys);
    const std::string updated = updateOrInsert(text, section, key, "\"v\"");
    ASSERT_EQ(updated, updatedByLines(text, section, key, "\"v\""))
        << ::testing::PrintToString(text);
    const std::size_t more = linesOf(updated).size() - linesOf(text).size();
    ++(more == 0 ? replaced : more == 1 ? inserted : appended);
  }
  EXPECT_GT(replaced, 500);
  EXPECT_GT(inserted, 2'000);
  EXPECT_GT(appended, 2'000);
}

TEST(SettingsWriterProperty, AllOtherLinesStayInTheirOrderByteForByte) {
  RandomText random(42);
  for (int round = 0; round < 10'000; ++round) {
    const std::string text = random.damaged(random.ofWords(kConfigWords, 60));
    const std::string updated = updateOrInsert(text, "model", "language", "\"\xC3\xA9\x01\"");
    const Lines before = linesOf(text);
    Lines after = linesOf(updated);
    const auto ours = std::ranges::find(after, "language = \"\xC3\xA9\x01\"");
    ASSERT_NE(ours, after.end());
    const std::size_t index = static_cast<std::size_t>(ours - after.begin());
    if (after.size() == before.size()) {
      after[index] = before[index];
    } else if (after.size() == before.size() + 1) {
      after.erase(ours);
    } else {
      ASSERT_EQ(index, after.size() - 1);
      after.resize(before.size());
    }
    ASSERT_EQ(after, before) << ::testing::PrintToString(text);
  }
}

TEST(SettingsWriterProperty, WritingTwiceIsTheSameAsOnce) {
  RandomText random(43);
  for (int round = 0; round < 10'000; ++round) {
    const ModelSettings settings = randomSettings(random);
    const std::string once =
        withSettings(random.damaged(random.ofWords(kConfigWords, 60)), settings);
    ASSERT_EQ(withSettings(once, settings), once) << ::testing::PrintToString(once);
  }
}

/// Files with lines of all kinds except those that the reader recognises and the writer does not: a
/// key inside a longer word or a comment, a key twice, a section twice, newlines that only the reader
/// knows, codes that count because the name is the default's.
std::string unambiguousFile(RandomText& random) {
  constexpr std::array kPlain = {"# a note\n"sv,         "\n"sv,
                                 "threads = 4\n"sv,      "  \t\n"sv,
                                 "gpu = \"0\"\n"sv,      "\xE6\xBC\xA2\n"sv,
                                 "# [audio] = soon\n"sv, "x\n"sv};
  constexpr std::array kOtherHeaders = {"[Model]\n"sv, "[server]\n"sv, "[audio] # old\n"sv};
  constexpr std::array kModelLines = {"\tlanguage\t=\t\"de\"  # note\n"sv, "translate=true\n"sv,
                                      "whisper_model = \"medium\"\n"sv};
  constexpr std::array kAudioLines = {"  hotkey=\"f8\"\n"sv, "hotkey_code = 100\n"sv};
  const auto plain = [&random, &kPlain] { return random.ofWords(kPlain, 3); };
  const auto section = [&](const std::string& header, const auto& keys) {
    if (random.below(4) == 0) return std::string();
    std::string text = header + plain();
    for (const std::string_view key : keys) {
      if (random.below(2) == 0) text += std::string(key) + plain();
    }
    return text;
  };
  std::string text = plain();
  if (random.below(2) == 0) text += one(random, kOtherHeaders) + "language = \"xx\"\n" + plain();
  const std::string model = section(" [model]\n", kModelLines);
  const std::string audio = section("[audio]\t\n", kAudioLines);
  text += random.below(2) == 0 ? model + audio : audio + model;
  if (!text.empty() && random.below(3) == 0) text.pop_back();
  return text;
}

TEST(SettingsWriterProperty, WhatWasWrittenIsReadBack) {
  RandomText random(44);
  for (int round = 0; round < 20'000; ++round) {
    const ModelSettings settings = randomSettings(random);
    const std::string before = unambiguousFile(random);
    const std::string text = withSettings(before, settings);
    ASSERT_EQ(parseSettings(text), settings) << before << "\n=>\n" << text;
    ASSERT_EQ(parseWhisperModel(text), settings.model) << before << "\n=>\n" << text;
  }
}

TEST(SettingsWriterProperty, ALineThatOnlyTheReaderRecognisesMayOverruleWhatWasWritten) {
  const ModelSettings settings{"fr", false, "right_cmd", "large-v3"};
  const auto readBack = [&settings](const char* old) {
    return parseSettings(withSettings(old, settings));
  };
  EXPECT_EQ(readBack("[model]\nlanguage = \"de\"\nsource_language = \"it\"\n").language, "it");
  EXPECT_EQ(readBack("[model]\nlanguage = \"de\"\n# language = \"it\"\n").language, "it");
  EXPECT_EQ(readBack("[model]\nlanguage = 1\n[model]\nlanguage = 2\n").language, "2");
  EXPECT_EQ(readBack("[audio]\nhotkey = 'f5'\nhotkey_code = 54\nhotkey_code = 97\n").hotkey, "f6");
  EXPECT_EQ(readBack("[model]\n# a\rlanguage = \"it\"\n").language, "it");
}

}  // namespace
}  // namespace voxtrel
