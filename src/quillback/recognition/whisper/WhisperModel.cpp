#include "quillback/recognition/whisper/WhisperModel.h"

#include <whisper.h>

#include <algorithm>
#include <utility>

#include "quillback/ports/Microphone.h"
#include "quillback/recognition/speech/ExpectedWords.h"
#include "quillback/recognition/whisper/WhisperLibrary.h"

namespace voxtrel::quillback {
namespace {

using std::chrono::duration_cast;
using std::chrono::microseconds;
using std::chrono::steady_clock;

constexpr int kSamplesPerPosition = kSampleRateHz / 50;
constexpr int kStep = 256;
constexpr int kMinPositions = 2 * kStep;
constexpr int kMaxPositions = 5 * kStep;  // the most below the library's 1500
constexpr std::size_t kMinSamples = kSampleRateHz / 5;
/// Silence after the piece, in which the decoder finds its end. With 0.8 s instead of 1 s it said some
/// sentences twice.
constexpr int kPadding = 50;

bool mayNotEncode(whisper_context* /*context*/, whisper_state* /*state*/, void* /*data*/) {
  return false;
}

}  // namespace

void WhisperModel::Free::operator()(whisper_context* context) const {
  whisper_free(context);
}

WhisperModel::WhisperModel(RecogniserOptions options) : options_(std::move(options)) {}

WhisperModel::~WhisperModel() = default;

LoadReport WhisperModel::load() {
  const auto load = [this] {
    whisper_context_params parameters = whisper_context_default_params();
    parameters.flash_attn = true;
    model_.reset(whisper_init_from_file_with_params(options_.weightsFile.c_str(), parameters));
    return model_ != nullptr;
  };
  const auto loaded = loadChecked(options_, load, [this](std::span<const float> samples) {
    recognise(samples, false);
    begin();
  });
  if (!loaded) return {false, {loaded.error()}};
  LoadReport report{true, {usingLine("Whisper", options_)}};
  if (options_.language != "auto" && !knows(options_.language)) {
    options_.language = "auto";
    report.lines.emplace_back(
        "[quillback] ERROR Whisper does not know the language of the settings; it is detected.");
  }
  whisper_tokenize(model_.get(), " ", &blank_, 1);
  prompt_ = promptOf(options_.prompt);
  expected_ = expectedWords();
  return report;
}

/// The library knows languages that only some models have.
bool WhisperModel::knows(const std::string& language) const {
  const int id = whisper_lang_id(language.c_str());
  return id >= 0 && (whisper_is_multilingual(model_.get()) == 0 || id < languages());
}

int WhisperModel::languages() const {
  return whisper_token_translate(model_.get()) - whisper_token_lang(model_.get(), 0);
}

std::size_t WhisperModel::maxSamples() const {
  return std::size_t{kMaxPositions - kPadding} * kSamplesPerPosition;
}

int WhisperModel::encoderPositions(std::size_t samples) {
  const int positions = static_cast<int>(samples) / kSamplesPerPosition + 1 + kPadding;
  return std::clamp((positions + kStep - 1) / kStep * kStep, kMinPositions, kMaxPositions);
}

int WhisperModel::maxTokens(std::size_t samples) {
  constexpr int kTokensPerSecond = 12;
  constexpr int kMinTokens = 24;
  constexpr int kMaxTokens = 220;  // half of what the decoder holds; the prompt may have the rest
  const int seconds = static_cast<int>(samples) / kSampleRateHz;
  return std::min(kMaxTokens, kMinTokens + seconds * kTokensPerSecond);
}

Heard WhisperModel::recognise(std::span<const float> samples, const std::atomic<bool>& isDropped) {
  const auto start = steady_clock::now();
  if (isDropped) return {};
  // Of less than a tenth of a second the library computes nothing, and the size of an earlier piece stays.
  std::vector<float> padded;
  if (samples.size() < kMinSamples) {
    padded.assign(samples.begin(), samples.end());
    padded.resize(kMinSamples);
    samples = padded;
  }
  if (!encode(samples)) return {.text = {}, .hasFailed = true};
  const auto encoded = steady_clock::now();
  for (Expected& each : expected_) each.isNear = false;
  const auto limit = static_cast<std::size_t>(maxTokens(samples.size()));
  Heard decoded = decodeAll(prompt_, limit, isDropped);
  if (!decoded.hasFailed) addExpectedWords(decoded.text, limit, isDropped);
  decoded.encode = duration_cast<microseconds>(encoded - start);
  decoded.decode = duration_cast<microseconds>(steady_clock::now() - encoded);
  return decoded;
}

bool WhisperModel::findsLanguage() const {
  return options_.language == "auto" && whisper_is_multilingual(model_.get()) != 0;
}

bool WhisperModel::encode(std::span<const float> samples) {
  // The library takes the encoder's size from a whole recognition only: one that ends at once.
  whisper_full_params parameters = whisper_full_default_params(WHISPER_SAMPLING_GREEDY);
  parameters.n_threads = options_.threads;
  parameters.audio_ctx = encoderPositions(samples.size());
  parameters.language = "en";
  parameters.encoder_begin_callback = mayNotEncode;
  const auto count = static_cast<int>(samples.size());
  return whisper_full(model_.get(), parameters, samples.data(), count) == 0 &&
         whisper_encode(model_.get(), 0, options_.threads) == 0;
}

WhisperModel::Tokens WhisperModel::tokensOf(const std::string& text) const {
  Tokens tokens(text.size() + 1);  // a token has at least one byte
  const int count =
      whisper_tokenize(model_.get(), text.c_str(), tokens.data(), static_cast<int>(tokens.size()));
  tokens.resize(static_cast<std::size_t>(std::max(0, count)));
  return tokens;
}

/// A text as what was said before; the decoder then prefers its words.
WhisperModel::Tokens WhisperModel::promptOf(const std::string& text) const {
  constexpr std::size_t kMaxPrompt = 200;
  if (text.empty()) return {};
  Tokens tokens = tokensOf(" " + text);
  if (tokens.size() > kMaxPrompt) tokens.erase(tokens.begin(), tokens.end() - kMaxPrompt);
  tokens.insert(tokens.begin(), whisper_token_prev(model_.get()));
  return tokens;
}

std::vector<WhisperModel::Expected> WhisperModel::expectedWords() const {
  std::vector<Expected> words;
  for (const std::string& word : options_.words) {
    Expected expected{word, {}};
    for (const std::string& written : {" " + word, word}) {
      const Tokens tokens = tokensOf(written);
      if (!tokens.empty() && tokens.front() != blank_) expected.starts.push_back(tokens.front());
    }
    words.push_back(std::move(expected));
  }
  return words;
}

/// Decodes the sound again with the words that were nearly said and are not in the text: first with all of
/// them, because names come together, then with each that is still missing, because one can spoil another.
void WhisperModel::addExpectedWords(std::string& text, std::size_t maxTokens,
                                    const std::atomic<bool>& isDropped) {
  constexpr std::size_t kMaxAlone = 4;
  std::vector<std::string> hints;
  for (const Expected& each : expected_) {
    if (each.isNear && !hasWord(text, each.word)) hints.push_back(each.word);
  }
  if (hints.size() > 1) {
    std::string all = hints.front();
    for (const std::string& word : std::span(hints).subspan(1)) all += ", " + word;
    hints.resize(std::min(hints.size(), kMaxAlone));
    hints.insert(hints.begin(), all);
  }
  const std::string before = options_.prompt.empty() ? "" : options_.prompt + " ";
  for (const std::string& hint : hints) {
    if (isDropped || hasWord(text, hint)) continue;
    // A sentence: behind half of one the decoder may write another half.
    const Heard hinted = decodeAll(promptOf(before + hint + "."), maxTokens, isDropped);
    if (!isDropped) text = withExpectedWords(text, hinted.text, options_.words);
  }
}

bool WhisperModel::decode(const Tokens& tokens, int position) {
  return whisper_decode(model_.get(), tokens.data(), static_cast<int>(tokens.size()), position,
                        options_.threads) == 0;
}

/// What the decoder thinks of each token as the next after the last of so many that it was given.
std::span<const float> WhisperModel::logits(std::size_t inputs) const {
  const auto width = static_cast<std::size_t>(whisper_n_vocab(model_.get()));
  return std::span(whisper_get_logits(model_.get()), inputs * width).last(width);
}

/// The most probable next token: a part of a word, or the end of the text. The tokens behind that one steer
/// the decoder and are no text.
WhisperModel::Token WhisperModel::bestToken(std::span<const float> logits, bool isFirst) const {
  const Token end = whisper_token_eot(model_.get());
  Token best = -1;
  // A text does not begin with a lone blank or with its end.
  for (Token token = 0; token <= end; ++token) {
    if (isFirst && (token == end || token == blank_)) continue;
    if (best < 0 ||
        logits[static_cast<std::size_t>(token)] > logits[static_cast<std::size_t>(best)]) {
      best = token;
    }
  }
  return best;
}

/// Notes which words of the settings are nearly as probable here as the best token.
void WhisperModel::noteNearWords(std::span<const float> logits, Token best) {
  constexpr float kNear = 7.0F;  // at least a thousandth as probable
  const float least = logits[static_cast<std::size_t>(best)] - kNear;
  for (Expected& each : expected_) {
    for (const Token start : each.starts) {
      if (logits[static_cast<std::size_t>(start)] >= least) each.isNear = true;
    }
  }
}

/// The language that the decoder finds most probable at the start, from the sound that is encoded.
void WhisperModel::detectLanguage() {
  language_ = "en";
  if (!decode({whisper_token_sot(model_.get())}, 0)) return;
  const auto all = logits(1).subspan(static_cast<std::size_t>(whisper_token_lang(model_.get(), 0)),
                                     static_cast<std::size_t>(languages()));
  language_ = whisper_lang_str(static_cast<int>(std::ranges::max_element(all) - all.begin()));
}

/// What the decoder is told first: what was said before, language and task.
WhisperModel::Tokens WhisperModel::opening(const Tokens& prompt) {
  whisper_context* const model = model_.get();
  Tokens tokens = prompt;
  tokens.push_back(whisper_token_sot(model));
  if (whisper_is_multilingual(model) != 0) {
    if (findsLanguage() && language_.empty()) detectLanguage();
    const std::string& language = findsLanguage() ? language_ : options_.language;
    tokens.push_back(whisper_token_lang(model, whisper_lang_id(language.c_str())));
    tokens.push_back(options_.translate ? whisper_token_translate(model)
                                        : whisper_token_transcribe(model));
  }
  tokens.push_back(
      whisper_token_not(model));  // timestamps would cost time, and words in long pieces
  return tokens;
}

/// The words of the sound that is encoded, each the most probable one.
Heard WhisperModel::decodeAll(const Tokens& prompt, std::size_t maxTokens,
                              const std::atomic<bool>& isDropped) {
  Heard heard;
  Tokens input = opening(prompt);
  Tokens words;
  int position = 0;
  while (words.size() < maxTokens && !isDropped && !heard.wasCut) {
    heard.hasFailed = !decode(input, position);
    if (heard.hasFailed) break;
    position += static_cast<int>(input.size());
    const auto next = logits(input.size());
    const Token best = bestToken(next, words.empty());
    noteNearWords(next, best);
    if (best == whisper_token_eot(model_.get())) break;
    words.push_back(best);
    heard.wasCut = lengthWithoutRepetition(words) < words.size();
    input = {best};
  }
  words.resize(lengthWithoutRepetition(words));
  heard.tokens = words.size();
  for (const Token token : words) heard.text += whisper_token_to_str(model_.get(), token);
  return heard;
}

std::size_t lengthWithoutRepetition(std::span<const int> tokens) {
  constexpr std::size_t kMaxPeriod = 40;
  // People do say a word four times over; the same sentence, hardly ever three times.
  constexpr std::size_t kLongPeriod = 8;
  constexpr std::size_t kFewTimes = 3;
  constexpr std::size_t kManyTimes = 8;
  for (std::size_t period = 1; period <= kMaxPeriod; ++period) {
    const std::size_t times = period >= kLongPeriod ? kFewTimes : kManyTimes;
    if (tokens.size() < period * times) continue;
    const auto end = tokens.last(period * times);
    if (std::ranges::equal(end.first(end.size() - period), end.subspan(period))) {
      return tokens.size() - end.size() + period;
    }
  }
  return tokens.size();
}

}  // namespace voxtrel::quillback
