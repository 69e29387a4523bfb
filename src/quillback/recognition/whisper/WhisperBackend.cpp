#include "quillback/recognition/whisper/WhisperBackend.h"

#include <whisper.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <optional>
#include <set>
#include <system_error>
#include <thread>
#include <utility>

#include "quillback/ports/Microphone.h"

namespace voxtrel::quillback {
namespace {

namespace fs = std::filesystem;
using std::chrono::duration_cast;
using std::chrono::microseconds;
using std::chrono::steady_clock;

/// The library ignores anything shorter than one second.
constexpr std::size_t kMinSamples = kSampleRateHz * 11 / 10;

void discardLog(ggml_log_level /*level*/, const char* /*text*/, void* /*data*/) {}

/// The model describes noise by a remark in brackets.
bool isRemark(const std::string& text) {
  return (text.front() == '[' && text.back() == ']') || (text.front() == '(' && text.back() == ')');
}

std::string trimmed(const std::string& text) {
  const std::size_t first = text.find_first_not_of(" \t\r\n");
  if (first == std::string::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

std::optional<int> readNumber(const fs::path& file) {
  std::ifstream input(file);
  int number = 0;
  if (input >> number) return number;
  return std::nullopt;
}

/// Whether `name` is "cpu" and a number.
bool isProcessor(const std::string& name) {
  return name.size() > 3 && name.starts_with("cpu") &&
         std::all_of(name.begin() + 3, name.end(),
                     [](unsigned char c) { return std::isdigit(c) != 0; });
}

}  // namespace

int physicalCores(const char* cpuFolder) {
  std::set<std::pair<int, int>> cores;  // package, number within it
  std::error_code error;
  for (fs::directory_iterator entry(cpuFolder, error), end; !error && entry != end;
       entry.increment(error)) {
    if (!isProcessor(entry->path().filename().string())) continue;
    // A processor that is switched off has no topology.
    const fs::path topology = entry->path() / "topology";
    const auto core = readNumber(topology / "core_id");
    const auto package = readNumber(topology / "physical_package_id");
    if (core && package) cores.emplace(*package, *core);
  }
  if (!cores.empty()) return static_cast<int>(cores.size());
  return std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
}

bool isWhisperBuiltIn() {
  return true;
}

std::unique_ptr<RecogniserBackend> makeWhisperBackend(const std::string& weightsFile,
                                                      const WhisperOptions& options) {
  return std::make_unique<WhisperBackend>(weightsFile, options, physicalCores(kCpuFolder));
}

void WhisperBackend::Free::operator()(whisper_context* context) const {
  whisper_free(context);
}

WhisperBackend::WhisperBackend(std::string weightsFile, WhisperOptions options, int threads)
    : weightsFile_(std::move(weightsFile)), options_(std::move(options)), threads_(threads) {}

WhisperBackend::~WhisperBackend() = default;

LoadReport WhisperBackend::load() {
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
  if (options_.language != "auto" && whisper_lang_id(options_.language.c_str()) < 0) {
    options_.language = "auto";
    report.lines.emplace_back(
        "[quillback] ERROR Whisper does not know the language of the settings; it is detected.");
  }
  return report;
}

void WhisperBackend::begin(const std::atomic<bool>& isDropped) {
  isDropped_ = &isDropped;
  samples_.clear();
}

void WhisperBackend::feed(std::span<const std::int16_t> samples) {
  for (const std::int16_t sample : samples) {
    samples_.push_back(static_cast<float>(sample) / 32768.0F);
  }
}

Transcription WhisperBackend::finish() {
  const auto start = steady_clock::now();
  samples_.resize(std::max(samples_.size(), kMinSamples));
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

bool WhisperBackend::isDropped(void* backend) {
  return static_cast<WhisperBackend*>(backend)->isDropped_->load();
}

bool WhisperBackend::mayEncode(whisper_context* /*context*/, whisper_state* /*state*/,
                               void* backend) {
  ++static_cast<WhisperBackend*>(backend)->encodings_;
  return !isDropped(backend);
}

whisper_full_params WhisperBackend::parameters() {
  whisper_full_params parameters = whisper_full_default_params(WHISPER_SAMPLING_GREEDY);
  parameters.n_threads = threads_;
  parameters.language = options_.language.c_str();
  parameters.translate = options_.translate;
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

std::string WhisperBackend::text() const {
  std::string all;
  const int count = whisper_full_n_segments(model_.get());
  for (int segment = 0; segment < count; ++segment) {
    // Segments begin with a blank in languages that put blanks between words.
    const std::string segmentText = whisper_full_get_segment_text(model_.get(), segment);
    const std::string words = trimmed(segmentText);
    if (!words.empty() && !isRemark(words)) all += segmentText;
  }
  return trimmed(all);
}

microseconds WhisperBackend::encodeTime() const {
  // The times are means per run. The library allocates the record (20 bytes) and cannot free it.
  const whisper_timings* timings = whisper_get_timings(model_.get());
  if (timings == nullptr) return {};
  return microseconds(std::llround(1000.0 * static_cast<double>(timings->encode_ms) * encodings_));
}

}  // namespace voxtrel::quillback
