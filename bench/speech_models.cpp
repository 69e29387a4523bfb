// Recognises recordings with the real library and weights, the engine's way and the library's own, in
// turn: speech_models WEIGHTS VOICE_DETECTION CLIPS.tsv [auto] [parakeet] [ours | library] [prompt=TEXT]
// [word=WORD]... [clip=NAME]... CLIPS.tsv names, in a table with a headline, sound files beside it and their languages;
// only the recordings NAME are taken, in that order, if there are such. Per recording and way one line,
// separated by tabs: way, recording, language, seconds of sound, 0, seconds from the release of the key to
// the words, 0, 0, words. The recording "load" is the loading of the weights.
#include <parakeet.h>
#include <whisper.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <memory>
#include <span>
#include <sstream>
#include <string>
#include <vector>

#include "quillback/ports/Microphone.h"
#include "quillback/recognition/Whisper.h"
#include "quillback/recognition/whisper/WhisperLibrary.h"
#include "support/WholeWav.h"

using namespace voxtrel::quillback;

namespace {

struct Clip {
  std::string name;
  std::string language;
  std::vector<float> samples;
};

double now() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

std::vector<Clip> readClips(const std::string& table) {
  const std::string folder = table.substr(0, table.rfind('/') + 1);
  std::ifstream file(table);
  std::string line;
  std::getline(file, line);
  std::vector<Clip> clips;
  while (std::getline(file, line)) {
    std::istringstream fields(line);
    Clip clip;
    std::getline(fields, clip.name, '\t');
    std::getline(fields, clip.language, '\t');
    auto wav = test::readWav(folder + clip.name + ".wav");
    if (!wav || wav->rateHz != kSampleRateHz) continue;
    clip.samples = std::move(wav->samples);
    clips.push_back(std::move(clip));
  }
  return clips;
}

/// The recordings of these names, in their order; all if there are no names.
std::vector<Clip> chosen(const std::vector<Clip>& all, const std::vector<std::string>& names) {
  if (names.empty()) return all;
  std::vector<Clip> some;
  for (const std::string& name : names) {
    const auto found = std::ranges::find(all, name, &Clip::name);
    if (found != all.end()) some.push_back(*found);
  }
  return some;
}

void report(const char* way, const Clip& clip, double seconds, const std::string& words) {
  std::printf("%s\t%s\t%s\t%.2f\t0\t%.3f\t0\t0\t%s\n", way, clip.name.c_str(),
              clip.language.c_str(), static_cast<double>(clip.samples.size()) / kSampleRateHz,
              seconds, words.c_str());
  std::fflush(stdout);
}

/// As in the engine: the sound comes at the speed of speech, and the recogniser works meanwhile. The
/// clock is kept by hand, so nothing waits for the sound.
void recogniseOurWay(RecogniserBackend& backend, const Clip& clip) {
  constexpr std::size_t kStep = kSampleRateHz / 10;
  const std::atomic<bool> isDropped{false};
  std::vector<std::int16_t> samples;
  for (const float sample : clip.samples) {
    samples.push_back(static_cast<std::int16_t>(std::lround(sample * 32767.0F)));
  }
  double spoken = 0;
  double free = 0;  // when the recogniser has done what it has got
  backend.begin(isDropped);
  for (std::span<const std::int16_t> rest = samples; !rest.empty();) {
    const auto step = rest.first(std::min(rest.size(), kStep));
    rest = rest.subspan(step.size());
    spoken += static_cast<double>(step.size()) / kSampleRateHz;
    const double start = now();
    backend.feed(step);
    free = std::max(free, spoken) + now() - start;
  }
  const double start = now();
  const Transcription result = backend.finish();
  report("ours", clip, std::max(free, spoken) + now() - start - spoken, result.text);
}

/// As the library's own program does: the whole encoder, with timestamps, after the sound has ended.
void recogniseLibraryWay(whisper_context* model, const Clip& clip, bool detect, int threads) {
  whisper_full_params parameters = whisper_full_default_params(WHISPER_SAMPLING_GREEDY);
  parameters.n_threads = threads;
  parameters.language = detect ? "auto" : clip.language.c_str();
  parameters.no_context = true;
  parameters.print_progress = false;
  const double start = now();
  std::string words;
  if (whisper_full(model, parameters, clip.samples.data(), static_cast<int>(clip.samples.size())) ==
      0) {
    for (int at = 0; at < whisper_full_n_segments(model); ++at) {
      words += whisper_full_get_segment_text(model, at);
    }
  }
  std::ranges::replace(words, '\n', ' ');
  report("library", clip, now() - start, words);
}

void recogniseLibraryWay(parakeet_context* model, const Clip& clip, int threads) {
  parakeet_full_params parameters = parakeet_full_default_params(PARAKEET_SAMPLING_GREEDY);
  parameters.n_threads = threads;
  parameters.no_context = true;
  const double start = now();
  parakeet_full(model, parameters, clip.samples.data(), static_cast<int>(clip.samples.size()));
  report("library", clip, now() - start, "");
}

/// The library's context and our backend for a language, loaded when first needed.
class Ways {
 public:
  Ways(RecogniserOptions options, std::string only)
      : options_(std::move(options)), only_(std::move(only)) {}
  Ways(const Ways&) = delete;
  Ways& operator=(const Ways&) = delete;
  ~Ways() {
    whisper_free(whisper_);
    parakeet_free(parakeet_);
  }

  void recognise(const Clip& clip, bool detect) {
    if (only_ != "ours") {
      if (whisper_ == nullptr && parakeet_ == nullptr) loadLibrary();
      if (whisper_ != nullptr) recogniseLibraryWay(whisper_, clip, detect, options_.threads);
      if (parakeet_ != nullptr) recogniseLibraryWay(parakeet_, clip, options_.threads);
    }
    if (only_ == "library") return;
    const std::string language = detect ? "auto" : clip.language;
    if (!backend_ || options_.language != language) loadOurs(language);
    recogniseOurWay(*backend_, clip);
  }

 private:
  void loadLibrary() {
    const double start = now();
    const char* const file = options_.weightsFile.c_str();
    if (options_.family == RecogniserOptions::Family::parakeet) {
      parakeet_ = parakeet_init_from_file_with_params(file, parakeet_context_default_params());
    } else {
      whisper_ = whisper_init_from_file_with_params(file, whisper_context_default_params());
    }
    report("library", {"load", "", {}}, now() - start, "");
  }
  void loadOurs(const std::string& language) {
    options_.language = language;
    backend_ = makeWhisperBackend(options_);
    const double start = now();
    backend_->load();
    report("ours", {"load", "", {}}, now() - start, "");
  }

  RecogniserOptions options_;
  const std::string only_;
  whisper_context* whisper_ = nullptr;
  parakeet_context* parakeet_ = nullptr;
  std::unique_ptr<RecogniserBackend> backend_;
};

}  // namespace

int main(int count, char** words) {
  const std::vector<std::string> arguments(words + 1, words + count);
  if (arguments.size() < 3) {
    std::puts(
        "speech_models WEIGHTS VOICE_DETECTION CLIPS.tsv [auto] [parakeet] [ours | library]"
        " [prompt=TEXT] [word=WORD]... [clip=NAME]...");
    return 2;
  }
  RecogniserOptions options;
  options.weightsFile = arguments[0];
  options.voiceDetectionFile = arguments[1];
  options.threads = physicalCores(kCpuFolder);
  const auto quiet = [](ggml_log_level, const char*, void*) {};
  whisper_log_set(quiet, nullptr);
  parakeet_log_set(quiet, nullptr);
  bool detect = false;
  std::string only;
  std::vector<std::string> names;
  for (const std::string& word : std::span(arguments).subspan(3)) {
    if (word == "auto") detect = true;
    if (word == "parakeet") options.family = RecogniserOptions::Family::parakeet;
    if (word == "ours" || word == "library") only = word;
    if (word.starts_with("clip=")) names.push_back(word.substr(5));
    if (word.starts_with("prompt=")) options.prompt = word.substr(7);
    if (word.starts_with("word=")) options.words.push_back(word.substr(5));
  }
  Ways ways(options, only);
  for (const Clip& clip : chosen(readClips(arguments[2]), names)) ways.recognise(clip, detect);
}
