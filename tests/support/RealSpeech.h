#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <map>
#include <memory>
#include <numeric>
#include <span>
#include <sstream>
#include <string>
#include <vector>

#include "quillback/ports/Microphone.h"
#include "quillback/recognition/Whisper.h"
#include "support/WholeWav.h"

namespace voxtrel::quillback {

using Samples = std::vector<std::int16_t>;

/// A recording of a person with the text that was read.
struct Recording {
  std::string name;
  std::string language;
  std::string text;
  Samples samples;
};

/// The samples of a WAV file at kSampleRateHz, times `gain`.
inline Samples samplesOf(const std::string& path, float gain = 1.0F) {
  Samples samples;
  const auto wav = test::readWav(path);
  if (!wav) return samples;
  for (const float sample : wav->samples) {
    samples.push_back(static_cast<std::int16_t>(std::lround(sample * gain * 32767.0F)));
  }
  return samples;
}

/// `text` in lower case and without punctuation, as words. Letters beyond ASCII stay as they are.
inline std::vector<std::string> plainWords(const std::string& text) {
  std::string plain;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x80 || std::isalnum(byte) != 0 || c == '\'') {
      plain += static_cast<char>(std::tolower(byte));
    } else {
      plain += ' ';
    }
  }
  std::istringstream stream(plain);
  return {std::istream_iterator<std::string>(stream), {}};
}

/// How many words must be changed, added or left out, per word of `truth`.
inline double wordErrorRate(const std::string& heard, const std::string& truth) {
  const auto words = plainWords(heard);
  const auto right = plainWords(truth);
  std::vector<std::size_t> row(words.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 1; i <= right.size(); ++i) {
    std::size_t before = row[0];
    row[0] = i;
    for (std::size_t j = 1; j <= words.size(); ++j) {
      const std::size_t changed = before + (right[i - 1] == words[j - 1] ? 0 : 1);
      before = row[j];
      row[j] = std::min({row[j] + 1, row[j - 1] + 1, changed});
    }
  }
  return static_cast<double>(row.back()) / static_cast<double>(right.size());
}

/// Tests with real weights and recordings, from the folder that VOXTREL_WHISPER_DATA names; without it
/// they are not run, and count as such.
class RealSpeech : public testing::Test {
 protected:
  void SetUp() override {
    if (folder().empty()) GTEST_SKIP() << "VOXTREL_WHISPER_DATA names no folder";
  }

  static std::string folder() {
    const char* const name = std::getenv("VOXTREL_WHISPER_DATA");
    return name == nullptr ? "" : name;
  }

  static RecogniserOptions options(const std::string& language) {
    RecogniserOptions options;
    options.weightsFile = folder() + "/ggml-base.bin";
    options.voiceDetectionFile = folder() + "/ggml-silero-v6.2.0.bin";
    options.language = language;
    options.threads = 1;
    return options;
  }

  static std::unique_ptr<RecogniserBackend> load(const RecogniserOptions& options) {
    auto backend = makeWhisperBackend(options);
    const LoadReport report = backend->load();
    EXPECT_TRUE(report.isUsable) << (report.lines.empty() ? "" : report.lines.back());
    return backend;
  }

  static Recording recording(const std::string& name, float gain = 1.0F) {
    std::ifstream table(folder() + "/speech/clips.tsv");
    for (std::string line; std::getline(table, line);) {
      std::istringstream fields(line);
      Recording found;
      std::string seconds;
      std::getline(fields, found.name, '\t');
      std::getline(fields, found.language, '\t');
      std::getline(fields, seconds, '\t');
      std::getline(fields, found.text, '\t');
      if (found.name != name) continue;
      found.samples = samplesOf(folder() + "/speech/" + name + ".wav", gain);
      EXPECT_FALSE(found.samples.empty()) << name;
      return found;
    }
    ADD_FAILURE() << "no recording " << name;
    return {};
  }

  static Transcription recognise(RecogniserBackend& backend,
                                 std::span<const std::int16_t> samples) {
    const std::atomic<bool> isDropped{false};
    backend.begin(isDropped);
    backend.feed(samples);
    return backend.finish();
  }
};

}  // namespace voxtrel::quillback
