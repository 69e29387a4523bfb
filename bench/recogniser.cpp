// Measures the embedded recogniser against PocketSphinx's command line programs on the same samples: the
// time from key up to the text, and how many words of the sentences are right. Prints "key: value"
// lines. Arguments: a list of sentences; "words" or "latency" to run only that.

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iostream>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "bench/RecogniserYardstick.h"
#include "quillback/ports/Microphone.h"
#include "quillback/recognition/ThreadedRecogniser.h"
#include "quillback/recognition/sphinx/SphinxBackend.h"
#include "support/PostedLoop.h"
#include "support/Voice.h"

namespace {

using namespace std::chrono_literals;
using voxtrel::quillback::kSampleRateHz;
using voxtrel::quillback::Transcription;
using voxtrel::quillback::bench::countOfRightWords;
using voxtrel::quillback::bench::RecogniserYardstick;
using voxtrel::quillback::bench::wordsOf;
using Clock = std::chrono::steady_clock;
using Samples = std::vector<std::int16_t>;

constexpr int kRounds = 11;
constexpr std::size_t kBlockSamples = kSampleRateHz / 100;  // 10 ms

struct Sentence {
  std::string voice, wordsPerMinute, text;
};

std::vector<Sentence> readSentences(const std::string& path) {
  std::vector<Sentence> sentences;
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    Sentence sentence;
    std::istringstream fields(line);
    std::getline(fields, sentence.voice, '|');
    std::getline(fields, sentence.wordsPerMinute, '|');
    std::getline(fields, sentence.text);
    sentences.push_back(sentence);
  }
  return sentences;
}

class Ours {
 public:
  Ours() {
    if (!loop_.runUntil([this] { return isLoaded_; })) std::exit(1);
  }

  /// Feeds one block per 10 ms if `isPaced`. `time` is from the last block to the text.
  std::string recognise(const Samples& samples, bool isPaced, Clock::duration* time) {
    const auto utterance = recogniser_.begin();
    Clock::time_point next = Clock::now();
    for (std::size_t at = 0; at < samples.size(); at += kBlockSamples) {
      if (isPaced) std::this_thread::sleep_until(next += 10ms);
      utterance->feed(std::span(samples).subspan(at, std::min(kBlockSamples, samples.size() - at)));
    }
    const auto released = Clock::now();
    std::optional<std::string> text;
    utterance->finish([&text](const Transcription& result) { text = result.text; });
    if (!loop_.runUntil([&text] { return text.has_value(); })) std::exit(1);
    if (time != nullptr) *time = Clock::now() - released;
    return *text;
  }

 private:
  voxtrel::quillback::test::PostedLoop loop_;
  bool isLoaded_ = false;
  voxtrel::quillback::ThreadedRecogniser recogniser_{
      loop_,
      std::make_unique<voxtrel::quillback::SphinxBackend>(voxtrel::quillback::sphinxModelFolder()),
      [this](const voxtrel::quillback::LoadReport& /*report*/) { isLoaded_ = true; }};
};

double medianMs(std::vector<Clock::duration> times) {
  std::ranges::nth_element(times, times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2));
  return std::chrono::duration<double, std::milli>(times[times.size() / 2]).count();
}

Clock::duration timeOf(const std::function<void()>& work) {
  const auto start = Clock::now();
  work();
  return Clock::now() - start;
}

/// The yardstick's load time is the time of the same command with 10 ms of silence.
void measureLatency(Ours& ours, voxtrel::quillback::test::Voice& voice,
                    const RecogniserYardstick& yardstick) {
  Samples samples =
      voxtrel::quillback::test::Voice::samplesOf(voice.say("i will be there in ten minutes"));
  samples.resize(2U * kSampleRateHz);
  const std::string speech = yardstick.write("speech", samples);
  const std::string nothing = yardstick.write("nothing", Samples(kBlockSamples));
  std::vector<Clock::duration> our, whole, load;
  for (int round = 0; round < kRounds; ++round) {
    ours.recognise(samples, true, &our.emplace_back());
    whole.push_back(timeOf([&] { yardstick.continuous(speech); }));
    load.push_back(timeOf([&] { yardstick.continuous(nothing); }));
  }
  const double decode = medianMs(whole) - medianMs(load);
  std::printf("key up to text, 2 s utterance, median: %.1f ms\n", medianMs(our));
  std::printf("pocketsphinx_continuous on the same samples, median: %.1f ms\n", medianMs(whole));
  std::printf("its load time, median: %.1f ms\n", medianMs(load));
  std::printf("key up to text / pocketsphinx_continuous without its load time: %.2f\n",
              medianMs(our) / decode);
}

void measureWords(Ours& ours, voxtrel::quillback::test::Voice& voice,
                  const RecogniserYardstick& yardstick, const std::vector<Sentence>& sentences) {
  std::size_t words = 0;
  std::map<std::string, std::size_t> right;
  std::map<std::string, int> exact;
  const auto score = [&](const std::string& who, const Sentence& sentence,
                         const std::string& text) {
    right[who] += countOfRightWords(wordsOf(sentence.text), wordsOf(text));
    exact[who] += wordsOf(sentence.text) == wordsOf(text) ? 1 : 0;
  };
  for (const Sentence& sentence : sentences) {
    const auto samples = voxtrel::quillback::test::Voice::samplesOf(
        voice.say(sentence.text, sentence.voice, sentence.wordsPerMinute));
    const std::string path = yardstick.write("sentence", samples);
    words += wordsOf(sentence.text).size();
    score("quillback", sentence, ours.recognise(samples, false, nullptr));
    score("pocketsphinx_continuous", sentence, yardstick.continuous(path));
    score("pocketsphinx_batch", sentence, yardstick.batch("sentence"));
  }
  std::printf("words in %zu sentences: %zu\n", sentences.size(), words);
  for (const auto& [who, count] : right) {
    std::printf("words right, %s: %zu (%d sentences exact)\n", who.c_str(), count, exact[who]);
  }
}

}  // namespace

int main(int argumentCount, char** arguments) {
  std::string list = QUILLBACK_SENTENCES;
  std::string only;
  for (int at = 1; at < argumentCount; ++at) {
    const std::string argument = arguments[at];
    (argument == "words" || argument == "latency" ? only : list) = argument;
  }
  voxtrel::quillback::test::Voice voice;
  const RecogniserYardstick yardstick(voice.folder());
  if (!yardstick.isThere()) {
    std::fprintf(stderr, "pocketsphinx_continuous or pocketsphinx_batch is not installed\n");
    return 1;
  }
  Ours ours;
  if (only != "words") measureLatency(ours, voice, yardstick);
  if (only != "latency") measureWords(ours, voice, yardstick, readSentences(list));
}
