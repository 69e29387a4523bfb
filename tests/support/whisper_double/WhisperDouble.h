#pragma once

#include <functional>
#include <string>
#include <vector>

#include "support/whisper_double/whisper.h"

namespace voxtrel::quillback::test {

/// The calls to a double of whisper.cpp's library, and what it returns. One per process; a test starts
/// with `fresh`.
/// Thread: one.
struct WhisperDouble {
  // Results.
  bool loads = true;
  int fullResult = 0;
  std::vector<std::string> segments;
  float encodeMs = 0;
  int encodings = 1;                      ///< 30 s windows of the utterance
  std::function<void()> whileItComputes;  ///< runs before each call of the callbacks

  // Calls.
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
