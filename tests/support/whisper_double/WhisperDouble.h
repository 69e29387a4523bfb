#pragma once

#include <functional>
#include <string>
#include <vector>

#include "support/whisper_double/whisper.h"

namespace voxtrel::quillback::test {

/// What the double of whisper.cpp's library was asked and what it answers. One for the process; a test
/// starts by resetting it.
/// Thread: one.
struct WhisperDouble {
  // Answers.
  bool loads = true;
  int fullResult = 0;
  std::vector<std::string> segments;
  float encodeMs = 0;
  int encodings = 1;                      ///< windows of the utterance
  std::function<void()> whileItComputes;  ///< runs before each question whether to go on

  // Record.
  int contexts = 0;  ///< loaded and not freed
  std::vector<std::string> loadedFiles;
  bool isLogSilenced = false;
  int resets = 0;
  whisper_full_params parameters{};
  std::string language;
  std::vector<float> samples;
  bool wasAborted = false;

  static WhisperDouble& instance();
  static WhisperDouble& fresh();
};

}  // namespace voxtrel::quillback::test
