#include "quillback/app/Transcribe.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <optional>
#include <span>
#include <utility>

#include <tl/expected.hpp>

#include "quillback/app/TakeCutter.h"
#include "quillback/audio/SoundFile.h"
#include "quillback/text/TextRules.h"

namespace voxtrel::quillback {
namespace {

using Samples = std::vector<std::int16_t>;

/// Reads a file and prints, once each, what is wrong with it.
/// Thread: one.  Owns: the file.  Borrows: the path and the notes.
/// Fails by: the exit status; what went wrong was printed.
class NotedSound {
 public:
  NotedSound(const std::string& path, Output& notes) : path_(path), notes_(notes) {}

  /// Opens the file and reads its first samples.
  tl::expected<Samples, TranscribeExit> open();
  /// The next samples; none at the end.
  tl::expected<std::span<const std::int16_t>, TranscribeExit> next();

 private:
  TranscribeExit failure(const WavError& error);
  void printNote();

  const std::string& path_;
  Output& notes_;
  std::optional<SoundFile> file_;
  std::string printed_;
};

tl::expected<Samples, TranscribeExit> NotedSound::open() {
  auto file = SoundFile::open(path_);
  if (!file) return tl::unexpected(failure(file.error()));
  file_.emplace(std::move(*file));
  printNote();
  const auto first = next();
  if (!first) return tl::unexpected(first.error());
  if (!first->empty()) return Samples(first->begin(), first->end());
  notes_.print("\"" + path_ + "\" holds no sound.");
  return tl::unexpected(TranscribeExit::empty);
}

tl::expected<std::span<const std::int16_t>, TranscribeExit> NotedSound::next() {
  const auto samples = file_->next();
  if (!samples) return tl::unexpected(failure(samples.error()));
  printNote();
  return *samples;
}

TranscribeExit NotedSound::failure(const WavError& error) {
  notes_.print("Cannot read \"" + path_ + "\": " + error.message);
  switch (error.kind) {
    case WavError::Kind::unreadable:
      return TranscribeExit::unreadable;
    case WavError::Kind::notWav:
      return TranscribeExit::notWav;
    case WavError::Kind::tooLong:
      break;
  }
  return TranscribeExit::tooLong;
}

void NotedSound::printNote() {
  if (file_->note() == printed_) return;
  printed_ = file_->note();
  notes_.print(printed_);
}

bool isLoaded(RecogniserBackend& backend, Output& notes) {
  const LoadReport report = backend.load();
  for (const std::string& line : report.lines) notes.print(line);
  return report.isUsable;
}

/// Recognises one take after the other.
/// Thread: one.  Borrows: the backend and the notes.
class FileTranscriber {
 public:
  FileTranscriber(RecogniserBackend& backend, Output& notes) : backend_(backend), notes_(notes) {
    backend_.begin(isDropped_);
  }

  void add(std::span<const std::int16_t> samples) { cutter_.add(samples); }
  /// All words as one line, as a dictation prints it.
  std::string finish() {
    cutter_.finish();
    endTake();
    if (words_.empty()) notes_.print("No words were understood.");
    return std::exchange(words_, {});
  }

 private:
  void endTake();

  RecogniserBackend& backend_;
  Output& notes_;
  const std::atomic<bool> isDropped_{false};
  TakeCutter cutter_{{[this](std::span<const std::int16_t> samples) { backend_.feed(samples); },
                      [this] {
                        endTake();
                        backend_.begin(isDropped_);
                      }}};
  std::string words_;
  std::vector<std::string> printed_;  ///< lines, each once for the whole file
};

void FileTranscriber::endTake() {
  const Transcription result = backend_.finish();
  for (const std::string& line : result.lines) {
    if (std::ranges::count(printed_, line) > 0) continue;
    notes_.print(line);
    printed_.push_back(line);
  }
  const std::string words = oneLineOfWords(result.text);
  if (!words.empty() && !words_.empty()) words_ += ' ';
  words_ += words;
}

struct Transcript {
  std::string words;
  TranscribeExit exit = TranscribeExit::done;  ///< else the file could not be read to its end
};

Transcript transcribeSound(NotedSound& sound, const Samples& first, RecogniserBackend& backend,
                           Output& notes) {
  FileTranscriber transcriber(backend, notes);
  transcriber.add(first);
  for (;;) {
    const auto samples = sound.next();
    if (!samples) return {transcriber.finish(), samples.error()};
    if (samples->empty()) return {transcriber.finish()};
    transcriber.add(*samples);
  }
}

/// One recording of a retry.
TranscribeExit retryTake(const StoredTake& take, RecogniserBackend& backend,
                         const std::function<bool(const std::string& words)>& deliver,
                         Output& notes) {
  NotedSound sound(take.path, notes);
  const auto first = sound.open();
  if (!first) {
    // Without sound it would fail again at every retry.
    const bool isUseless =
        first.error() == TranscribeExit::notWav || first.error() == TranscribeExit::empty;
    if (isUseless) take.kept->delivered();
    return first.error();
  }
  const Transcript heard = transcribeSound(sound, *first, backend, notes);
  if (heard.exit != TranscribeExit::done) return heard.exit;
  if (!heard.words.empty() && !deliver(heard.words)) return TranscribeExit::unwritten;
  heard.words.empty() ? take.kept->gaveNoWords() : take.kept->delivered();
  return TranscribeExit::done;
}

}  // namespace

TranscribeExit transcribeFile(const std::string& path, RecogniserBackend& backend, Output& text,
                              Output& notes) {
  NotedSound sound(path, notes);
  const auto first = sound.open();
  if (!first) return first.error();
  if (!isLoaded(backend, notes)) return TranscribeExit::noRecogniser;
  const Transcript heard = transcribeSound(sound, *first, backend, notes);
  if (!heard.words.empty()) text.print(heard.words);
  return heard.exit;
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
