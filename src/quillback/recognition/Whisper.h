#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "quillback/recognition/RecogniserBackend.h"

namespace voxtrel::quillback {

// CMake picks the room that defines these functions: `whisper` where the library is built along or
// installed, else `no_whisper`.

/// What a recogniser of the library's models needs.
struct RecogniserOptions {
  enum class Family { whisper, parakeet };

  Family family = Family::whisper;
  std::string weightsFile;         ///< path
  std::string voiceDetectionFile;  ///< path; empty: the loudness decides what is speech
  std::string language = "auto";   ///< a language code; "auto" detects the language
  bool translate = false;          ///< to English
  std::string prompt;              ///< what the recogniser takes for said before
  std::vector<std::string> words;  ///< names and other words that may be said
  int threads = 0;                 ///< 0: as many as the processor has cores
  int processorVariant = 0;        ///< of processorVariants, the best first
};

/// Whether this build can use Whisper's weights.
bool isWhisperBuiltIn();

/// The recogniser for these options; null in a build without Whisper. The library may end the process
/// (on damaged weights, or where memory runs out), so it runs in one of its own.
std::unique_ptr<RecogniserBackend> makeWhisperBackend(const RecogniserOptions& options);

/// How many kinds of processors the library has code for; 1 if it was built for this one.
int processorVariants();

/// For one line about what runs: the library's version, what it computes on, with how many threads (0: one
/// per core) and with which code. Empty in a build without Whisper.
std::string describeWhisper(int threads);

/// How many times as long as on the machine of the pinned models' figures a product of matrices takes here,
/// measured in a tenth of a second. Nothing in a build without Whisper.
std::optional<double> measureProcessor();

}  // namespace voxtrel::quillback
