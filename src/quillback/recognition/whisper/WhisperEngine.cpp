#include "quillback/recognition/whisper/WhisperEngine.h"

#include <whisper.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "quillback/ports/Microphone.h"

namespace voxtrel::quillback {
namespace {

using std::chrono::duration_cast;
using std::chrono::microseconds;
using std::chrono::steady_clock;

/// The library passes over anything shorter than one second.
constexpr std::size_t kFewestSamples = kSampleRateHz * 11 / 10;

void discardLog(ggml_log_level /*level*/, const char* /*text*/, void* /*data*/) {}

/// What the model writes for noise: nothing but remarks in brackets.
bool isRemark(const std::string& text) {
  return (text.front() == '[' && text.back() == ']') || (text.front() == '(' && text.back() == ')');
}

std::string trimmed(const std::string& text) {
  const std::size_t first = text.find_first_not_of(" \t\r\n");
  if (first == std::string::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

}  // namespace

void WhisperEngine::Free::operator()(whisper_context* context) const {
  whisper_free(context);
}

WhisperEngine::WhisperEngine(std::string weightsFile, SpeechSettings settings, int threads)
    : weightsFile_(std::move(weightsFile)), settings_(std::move(settings)), threads_(threads) {}

WhisperEngine::~WhisperEngine() = default;

LoadReport WhisperEngine::load() {
  whisper_log_set(discardLog, nullptr);
  model_.reset(
      whisper_init_from_file_with_params(weightsFile_.c_str(), whisper_context_default_params()));
  if (!model_) {
    return {
        false,
        {"[quillback] ERROR The Whisper weights cannot be loaded: they are damaged, or there is "
         "too little memory."}};
  }
  LoadReport report{true, {"Using Whisper."}};
  if (settings_.language != "auto" && whisper_lang_id(settings_.language.c_str()) < 0) {
    settings_.language = "auto";
    report.lines.emplace_back(
        "[quillback] ERROR Whisper does not know the language of the settings; it is detected.");
  }
  return report;
}

void WhisperEngine::begin(const std::atomic<bool>& isDropped) {
  isDropped_ = &isDropped;
  samples_.clear();
}

void WhisperEngine::hear(std::span<const std::int16_t> samples) {
  for (const std::int16_t sample : samples) {
    samples_.push_back(static_cast<float>(sample) / 32768.0F);
  }
}

Transcription WhisperEngine::finish() {
  const auto start = steady_clock::now();
  samples_.resize(std::max(samples_.size(), kFewestSamples));
  encodings_ = 0;
  whisper_reset_timings(model_.get());
  Transcription result;
  if (whisper_full(model_.get(), parameters(), samples_.data(),
                   static_cast<int>(samples_.size())) == 0) {
    result.text = text();
  }
  const auto total = duration_cast<microseconds>(steady_clock::now() - start);
  result.encode = std::min(encodeTime(), total);
  result.decode = total - result.encode;
  return result;
}

bool WhisperEngine::isDropped(void* engine) {
  return static_cast<WhisperEngine*>(engine)->isDropped_->load();
}

bool WhisperEngine::mayEncode(whisper_context* /*context*/, whisper_state* /*state*/,
                              void* engine) {
  ++static_cast<WhisperEngine*>(engine)->encodings_;
  return !isDropped(engine);
}

whisper_full_params WhisperEngine::parameters() {
  whisper_full_params parameters = whisper_full_default_params(WHISPER_SAMPLING_GREEDY);
  parameters.n_threads = threads_;
  parameters.language = settings_.language.c_str();
  parameters.translate = settings_.translate;
  parameters.no_context = true;
  parameters.print_special = false;
  parameters.print_progress = false;
  parameters.print_realtime = false;
  parameters.print_timestamps = false;
  parameters.encoder_begin_callback = mayEncode;
  parameters.encoder_begin_callback_user_data = this;
  parameters.abort_callback = isDropped;
  parameters.abort_callback_user_data = this;
  return parameters;
}

std::string WhisperEngine::text() const {
  std::string all;
  const int count = whisper_full_n_segments(model_.get());
  for (int segment = 0; segment < count; ++segment) {
    // A segment brings its own blank where its language has blanks between words.
    const std::string segmentText = whisper_full_get_segment_text(model_.get(), segment);
    const std::string words = trimmed(segmentText);
    if (!words.empty() && !isRemark(words)) all += segmentText;
  }
  return trimmed(all);
}

microseconds WhisperEngine::encodeTime() const {
  // The library gives a new record of twenty bytes each time, means per run, and no way to free it.
  const whisper_timings* timings = whisper_get_timings(model_.get());
  if (timings == nullptr) return {};
  return microseconds(std::llround(1000.0 * static_cast<double>(timings->encode_ms) * encodings_));
}

}  // namespace voxtrel::quillback
