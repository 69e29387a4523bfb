#include "quillback/recognition/speech/PiecewiseBackend.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <iterator>
#include <numeric>
#include <string_view>
#include <utility>

#include "common/base/Lines.h"
#include "quillback/recognition/speech/RepeatedText.h"

namespace voxtrel::quillback {
namespace {

constexpr std::size_t kFrame = VoiceDetector::kFrameSamples;

constexpr std::string_view kRepetitionLine =
    "The recogniser repeated itself; the repetition was left out.";

constexpr std::string_view kFailureLine =
    "[quillback] ERROR The model failed, so words are missing; perhaps the memory is too small.";

/// One frame, times `gain`; a short one is filled up with silence.
std::array<float, kFrame> amplified(std::span<const float> samples, float gain) {
  std::array<float, kFrame> louder{};
  std::ranges::transform(samples, louder.begin(), [gain](float sample) { return sample * gain; });
  return louder;
}

/// What brings a sound with this peak to full level.
float gainFor(float peak) {
  constexpr float kMinPeak = 1e-4F;   // -80 dB: below it there is nothing but noise
  constexpr float kFullLevel = 0.5F;  // -6 dB
  return peak < kMinPeak ? 1.0F : kFullLevel / peak;
}

bool isBlank(char c) {
  return std::isspace(static_cast<unsigned char>(c)) != 0;
}

/// Behind the remark or note of music that begins at `begin`; `begin` itself if there is none.
std::size_t endOfRemark(std::string_view text, std::size_t begin) {
  constexpr std::string_view kNotes = "\xE2\x99";  // U+2669 to U+266C
  constexpr std::size_t kNoteBytes = 3;
  const std::string_view rest = text.substr(begin);
  if (rest.starts_with('[') || rest.starts_with('*')) {
    const std::size_t end = rest.find(rest.front() == '[' ? ']' : '*', 1);
    return end == std::string_view::npos ? begin : begin + end + 1;
  }
  const bool isNote = rest.starts_with(kNotes) && rest.size() >= kNoteBytes && rest[2] >= '\xA9' &&
                      rest[2] <= '\xAC';
  return isNote ? begin + kNoteBytes : begin;
}

/// Whether parentheses hold the whole text, but for blanks and full stops around them.
bool isInParentheses(std::string_view text) {
  while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && (isBlank(text.back()) || text.back() == '.')) text.remove_suffix(1);
  return (text.starts_with('(') && text.ends_with(')')) ||
         (text.starts_with("\uFF08") && text.ends_with("\uFF09"));
}

/// Whether the model has probably left out a sentence. People say 3 to 6 tokens a second.
bool saysTooLittle(const Heard& heard, PieceCutter::Frames frames) {
  constexpr double kTokensPerSecond = 2.5;
  constexpr std::size_t kLongEnough = speechFrames(5);
  const std::size_t voiced = PieceCutter::voicedFrames(frames);
  const double seconds = static_cast<double>(voiced * kFrame) / kSampleRateHz;
  return voiced >= kLongEnough && !heard.hasFailed && !heard.wasCut &&
         static_cast<double>(heard.tokens) < kTokensPerSecond * seconds;
}

Heard joined(Heard first, const Heard& second) {
  first.text += second.text;
  first.tokens += second.tokens;
  first.encode += second.encode;
  first.decode += second.decode;
  first.wasCut = first.wasCut || second.wasCut;
  first.hasFailed = first.hasFailed || second.hasFailed;
  return first;
}

float peakOf(std::span<const float> samples) {
  float peak = 0;
  for (const float sample : samples) peak = std::max(peak, std::abs(sample));
  return peak;
}

}  // namespace

PiecewiseBackend::PiecewiseBackend(std::unique_ptr<SpeechModel> model, LoadDetector loadDetector)
    : model_(std::move(model)),
      loadDetector_(std::move(loadDetector)),
      cutter_(model_->maxSamples() / kFrame) {}

LoadReport PiecewiseBackend::load() {
  LoadReport report = model_->load();
  if (!report.isUsable) return report;
  detector_ = loadDetector_();
  report.lines.front() += detector_ ? ", with voice detection." : ", without voice detection.";
  if (detector_) return report;
  detector_ = std::make_unique<LoudnessDetector>();
  report.lines.emplace_back(
      "The voice detection is missing, so noise may become words. Run \"quillback setup\" to fetch "
      "it.");
  return report;
}

void PiecewiseBackend::begin(const std::atomic<bool>& isDropped) {
  isDropped_ = &isDropped;
  samples_.clear();
  judgedSamples_ = 0;
  peak_ = 0;
  result_ = {};
  cutter_.reset();
  detector_->reset();
  model_->begin();
}

void PiecewiseBackend::feed(std::span<const std::int16_t> samples) {
  constexpr float kFullScale = 32768.0F;
  std::ranges::transform(samples, std::back_inserter(samples_), [](std::int16_t sample) {
    return static_cast<float>(sample) / kFullScale;
  });
  while (samples_.size() - judgedSamples_ >= kFrame && !*isDropped_) addFrame();
}

Transcription PiecewiseBackend::finish() {
  const PieceCutter::Frames rest = cutter_.rest();
  if (!samples_.empty()) endPiece({rest.begin(), rest.end()}, samples_.size());
  // A model that hears nothing may say the same in every piece.
  CutText kept = cutRepetition(trimmedOneLine(result_.text));
  if (kept.wasCut) report(kRepetitionLine);
  result_.text = std::move(kept.text);
  return std::exchange(result_, {});
}

/// A line of the result, which may concern several pieces.
void PiecewiseBackend::report(std::string_view line) {
  if (std::ranges::count(result_.lines, line) == 0) result_.lines.emplace_back(line);
}

void PiecewiseBackend::addFrame() {
  const auto frame = std::span<const float>(samples_).subspan(judgedSamples_, kFrame);
  judgedSamples_ += kFrame;
  peak_ = std::max(peak_, peakOf(frame));
  const auto piece = cutter_.add(detector_->probability(amplified(frame, gainFor(peak_))));
  if (piece) endPiece(*piece, piece->size() * kFrame);
}

/// Recognises the first samples, which are a piece, and forgets them.
void PiecewiseBackend::endPiece(const std::vector<float>& frames, std::size_t count) {
  const auto end = std::next(samples_.begin(), static_cast<std::ptrdiff_t>(count));
  const std::vector<float> samples(samples_.begin(), end);
  samples_.erase(samples_.begin(), end);
  judgedSamples_ -= std::min(judgedSamples_, count);
  if (PieceCutter::hasSpeech(frames) || hasQuietSpeech(samples)) recognise(samples, frames);
}

/// Judges the piece again, at the level that only its whole tells.
bool PiecewiseBackend::hasQuietSpeech(std::span<const float> samples) {
  const float gain = gainFor(peakOf(samples));
  std::vector<float> probabilities;
  detector_->reset();
  for (std::span<const float> rest = samples; !rest.empty() && !*isDropped_;) {
    const std::size_t count = std::min(rest.size(), kFrame);
    probabilities.push_back(detector_->probability(amplified(rest.first(count), gain)));
    rest = rest.subspan(count);
  }
  return PieceCutter::hasSpeech(probabilities);
}

void PiecewiseBackend::recognise(std::span<const float> samples, PieceCutter::Frames frames) {
  const Heard heard = recogniseAll(samples, frames);
  if (*isDropped_) return;
  const CutText kept = cutRepetition(withoutRemarks(heard.text));
  result_.text += kept.text;
  result_.encode += heard.encode;
  result_.decode += heard.decode;
  if (heard.wasCut || kept.wasCut) report(kRepetitionLine);
  if (heard.hasFailed) report(kFailureLine);
}

/// Where a voice changes, Whisper may end too early and leave out all that follows or all before. Then the
/// parts before and behind the longest pause are recognised, and so on.
Heard PiecewiseBackend::recogniseAll(std::span<const float> samples, PieceCutter::Frames frames) {
  Heard whole = model_->recognise(samples, *isDropped_);
  const std::size_t split = PieceCutter::longestPause(frames);
  if (*isDropped_ || split == 0 || !saysTooLittle(whole, frames)) return whole;
  const Heard first = recogniseAll(samples.first(split * kFrame), frames.first(split));
  const Heard second = recogniseAll(samples.subspan(split * kFrame), frames.subspan(split));
  // A model that says the same of both does not hear either.
  const bool saysMore = first.tokens + second.tokens > whole.tokens && first.text != second.text;
  return saysMore ? joined(first, second) : whole;
}

float LoudnessDetector::probability(std::span<const float> frame) {
  constexpr float kRange = 1e-3F;  // 30 dB
  const float level = std::inner_product(frame.begin(), frame.end(), frame.begin(), 0.0F);
  loudest_ = std::max(loudest_, level);
  return level > loudest_ * kRange ? 1.0F : 0.0F;
}

std::string withoutRemarks(const std::string& text) {
  std::string rest;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t begin = text[at] == ' ' ? at + 1 : at;
    const std::size_t end = endOfRemark(text, begin);
    if (end == begin) rest += text[at];
    at = end == begin ? at + 1 : end;
  }
  if (isInParentheses(rest)) return {};
  // Lone punctuation is no speech.
  const bool hasWord = std::ranges::any_of(rest, [](char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || static_cast<signed char>(c) < 0;
  });
  return hasWord ? rest : std::string();
}

}  // namespace voxtrel::quillback
