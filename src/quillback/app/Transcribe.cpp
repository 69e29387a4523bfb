#include "quillback/app/Transcribe.h"

#include <atomic>
#include <cstdint>
#include <span>

#include <tl/expected.hpp>

#include "common/base/Lines.h"
#include "quillback/audio/Resampler.h"
#include "quillback/audio/WavFile.h"
#include "quillback/text/TextRules.h"

namespace voxtrel::quillback {
namespace {

using Samples = std::vector<std::int16_t>;

tl::expected<Samples, TranscribeExit> readSamples(const std::string& path, Output& notes) {
  const auto wav = readWav(path);
  if (!wav) {
    notes.print("Cannot read \"" + path + "\": " + wav.error().message);
    const bool isUnreadable = wav.error().kind == WavError::Kind::unreadable;
    return tl::unexpected(isUnreadable ? TranscribeExit::unreadable : TranscribeExit::notWav);
  }
  if (!wav->note.empty()) notes.print(wav->note);
  Samples samples = resampled(wav->samples, wav->rateHz);
  if (!samples.empty()) return samples;
  notes.print("\"" + path + "\" holds no sound.");
  return tl::unexpected(TranscribeExit::empty);
}

bool isLoaded(RecogniserBackend& backend, Output& notes) {
  const LoadReport report = backend.load();
  for (const std::string& line : report.lines) notes.print(line);
  return report.isUsable;
}

/// One line, as a dictation prints it.
std::string recognised(RecogniserBackend& backend, std::span<const std::int16_t> samples,
                       Output& notes) {
  const std::atomic<bool> isDropped{false};
  backend.begin(isDropped);
  backend.feed(samples);
  const Transcription result = backend.finish();
  for (const std::string& line : result.lines) notes.print(line);
  std::string words = trimmedOneLine(withoutInvisible(result.text));
  if (words.empty()) notes.print("No words were understood.");
  return words;
}

/// One recording of a retry.
TranscribeExit retryTake(const StoredTake& take, RecogniserBackend& backend,
                         const std::function<bool(const std::string& words)>& deliver,
                         Output& notes) {
  const auto samples = readSamples(take.path, notes);
  if (!samples) {
    // Without sound it would fail again at every retry.
    if (samples.error() != TranscribeExit::unreadable) take.kept->delivered();
    return samples.error();
  }
  const std::string words = recognised(backend, *samples, notes);
  if (!words.empty() && !deliver(words)) return TranscribeExit::unwritten;
  words.empty() ? take.kept->gaveNoWords() : take.kept->delivered();
  return TranscribeExit::done;
}

}  // namespace

TranscribeExit transcribeFile(const std::string& path, RecogniserBackend& backend, Output& text,
                              Output& notes) {
  const auto samples = readSamples(path, notes);
  if (!samples) return samples.error();
  if (!isLoaded(backend, notes)) return TranscribeExit::noRecogniser;
  const std::string words = recognised(backend, *samples, notes);
  if (!words.empty()) text.print(words);
  return TranscribeExit::done;
}

TranscribeExit retryTakes(const std::vector<StoredTake>& takes, RecogniserBackend& backend,
                          const std::function<bool(const std::string& words)>& deliver,
                          Output& notes) {
  if (takes.empty()) {
    notes.print("There is nothing to retry.");
    return TranscribeExit::empty;
  }
  if (!isLoaded(backend, notes)) return TranscribeExit::noRecogniser;
  TranscribeExit exit = TranscribeExit::done;
  for (const StoredTake& take : takes) {
    const TranscribeExit next = retryTake(take, backend, deliver, notes);
    if (next == TranscribeExit::unwritten) return next;
    if (exit == TranscribeExit::done) exit = next;
  }
  return exit;
}

}  // namespace voxtrel::quillback
