#include "quillback/app/Transcribe.h"

#include <atomic>
#include <vector>

#include "quillback/audio/Resampler.h"
#include "quillback/audio/WavFile.h"

namespace voxtrel::quillback {
namespace {

std::string recognised(RecogniserBackend& backend, std::span<const std::int16_t> samples) {
  const std::atomic<bool> isDropped{false};
  backend.begin(isDropped);
  backend.feed(samples);
  return backend.finish().text;
}

}  // namespace

TranscribeExit transcribeFile(const std::string& path, RecogniserBackend& backend, Output& text,
                              Output& notes) {
  const auto wav = readWav(path);
  if (!wav) {
    notes.print("Cannot read \"" + path + "\": " + wav.error().message);
    return wav.error().kind == WavError::Kind::notWav ? TranscribeExit::notWav
                                                      : TranscribeExit::unreadable;
  }
  if (!wav->note.empty()) notes.print(wav->note);
  const std::vector<std::int16_t> samples = resampled(wav->samples, wav->rateHz);
  if (samples.empty()) {
    notes.print("\"" + path + "\" holds no sound.");
    return TranscribeExit::empty;
  }
  const LoadReport report = backend.load();
  for (const std::string& line : report.lines) notes.print(line);
  if (!report.isUsable) return TranscribeExit::noRecogniser;
  const std::string words = recognised(backend, samples);
  if (words.empty()) {
    notes.print("No words were understood.");
  } else {
    text.print(words);
  }
  return TranscribeExit::done;
}

}  // namespace voxtrel::quillback
