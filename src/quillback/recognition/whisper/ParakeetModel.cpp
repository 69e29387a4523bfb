#include "quillback/recognition/whisper/ParakeetModel.h"

#include <parakeet.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>
#include <vector>

#include "quillback/ports/Microphone.h"
#include "quillback/recognition/whisper/WhisperLibrary.h"

namespace voxtrel::quillback {
namespace {

using std::chrono::duration_cast;
using std::chrono::microseconds;
using std::chrono::steady_clock;

constexpr std::array<std::string_view, 25> kLanguages = {
    "bg", "hr", "cs", "da", "nl", "en", "et", "fi", "fr", "de", "el", "hu", "it",
    "lv", "lt", "mt", "pl", "pt", "ro", "sk", "sl", "es", "sv", "ru", "uk"};

/// One line for each setting that the model cannot follow.
std::vector<std::string> unknownSettings(const RecogniserOptions& options) {
  std::vector<std::string> lines;
  const auto add = [&lines](const std::string& what) {
    lines.push_back("[quillback] ERROR Parakeet " + what + "; choose a Whisper model for that.");
  };
  if (options.translate) add("does not translate");
  if (!options.prompt.empty() || !options.words.empty()) add("takes no prompt and no words");
  const bool isKnown =
      options.language == "auto" || std::ranges::count(kLanguages, options.language) > 0;
  if (!isKnown) add("does not know the language of the settings");
  return lines;
}

}  // namespace

void ParakeetModel::Free::operator()(parakeet_context* context) const {
  parakeet_free(context);
}

ParakeetModel::ParakeetModel(RecogniserOptions options) : options_(std::move(options)) {}

ParakeetModel::~ParakeetModel() = default;

LoadReport ParakeetModel::load() {
  const auto load = [this] {
    model_.reset(parakeet_init_from_file_with_params(options_.weightsFile.c_str(),
                                                     parakeet_context_default_params()));
    return model_ != nullptr;
  };
  const auto loaded = loadChecked(
      options_, load, [this](std::span<const float> samples) { recognise(samples, false); });
  if (!loaded) return {false, {loaded.error()}};
  LoadReport report{true, {usingLine("Parakeet", options_)}};
  for (std::string& line : unknownSettings(options_)) report.lines.push_back(std::move(line));
  return report;
}

std::size_t ParakeetModel::maxSamples() const {
  // As long as Whisper's pieces: longer ones would only take longer after the key.
  return std::size_t{kSampleRateHz} * 24;
}

Heard ParakeetModel::recognise(std::span<const float> samples, const std::atomic<bool>& isDropped) {
  constexpr std::size_t kMinSamples = kSampleRateHz;  // the encoder needs some frames
  Heard heard;
  if (isDropped) return heard;
  const auto start = steady_clock::now();
  std::vector<float> sound(samples.begin(), samples.end());
  sound.resize(std::max(sound.size(), kMinSamples));
  parakeet_full_params parameters = parakeet_full_default_params(PARAKEET_SAMPLING_GREEDY);
  parameters.n_threads = options_.threads;
  parameters.no_context = true;
  parameters.abort_callback = isFlagSet;
  parameters.abort_callback_user_data = const_cast<std::atomic<bool>*>(&isDropped);
  parakeet_reset_timings(model_.get());
  if (parakeet_full(model_.get(), parameters, sound.data(), static_cast<int>(sound.size())) != 0) {
    heard.hasFailed = true;
    return heard;
  }
  const int count = parakeet_full_n_segments(model_.get());
  for (int segment = 0; segment < count; ++segment) {
    heard.text += ' ';
    heard.text += parakeet_full_get_segment_text(model_.get(), segment);
    heard.tokens += static_cast<std::size_t>(parakeet_full_n_tokens(model_.get(), segment));
  }
  heard.decode = duration_cast<microseconds>(steady_clock::now() - start);
  return heard;
}

}  // namespace voxtrel::quillback
