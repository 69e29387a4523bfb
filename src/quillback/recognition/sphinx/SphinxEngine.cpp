#include "quillback/recognition/sphinx/SphinxEngine.h"

#include <sphinxbase/err.h>

#include <utility>

#include "quillback/recognition/sphinx/MeanWatch.h"
#include "quillback/recognition/sphinx/SphinxObjects.h"

namespace voxtrel::quillback {
namespace {

SphinxOptions readOptions(const std::string& folder) {
  return SphinxOptions(cmd_ln_init(nullptr, ps_args(), TRUE, "-hmm", (folder + "/en-us").c_str(),
                                   "-lm", (folder + "/en-us.lm.bin").c_str(), "-dict",
                                   (folder + "/cmudict-en-us.dict").c_str(), nullptr));
}

}  // namespace

struct SphinxEngine::Model {
  explicit Model(const std::string& folder)
      : options(readOptions(folder)), decoder(options ? ps_init(options.get()) : nullptr) {
    if (decoder) mean = std::make_unique<MeanWatch>(decoder.get(), options.get());
  }

  bool isUsable() const { return mean && mean->isUsable(); }

  const SphinxOptions options;
  const SphinxDecoder decoder;
  std::unique_ptr<MeanWatch> mean;
};

SphinxEngine::SphinxEngine(std::string modelFolder) : modelFolder_(std::move(modelFolder)) {}

SphinxEngine::~SphinxEngine() = default;

LoadReport SphinxEngine::load() {
  // The library tells all it does on standard error, beside our own lines.
  err_set_logfp(nullptr);
  model_ = std::make_unique<Model>(modelFolder_);
  if (model_->isUsable()) return {true, {}};
  return {false,
          {"[quillback] ERROR The embedded recogniser cannot load its model from " + modelFolder_ +
           "; install the package pocketsphinx-en-us."}};
}

void SphinxEngine::begin(const std::atomic<bool>& /*isDropped*/) {
  // An utterance that was dropped has left its part open.
  if (isInPart_) endPart();
  text_.clear();
  waiting_.clear();
  blockSamples_ = kFirstBlockSamples;
  ps_start_stream(model_->decoder.get());
  model_->mean->begin();
}

void SphinxEngine::hear(std::span<const std::int16_t> samples) {
  while (waiting_.size() + samples.size() >= blockSamples_) {
    const auto rest = samples.first(blockSamples_ - waiting_.size());
    waiting_.insert(waiting_.end(), rest.begin(), rest.end());
    decodeBlock(waiting_);
    waiting_.clear();
    blockSamples_ = kBlockSamples;
    samples = samples.subspan(rest.size());
  }
  waiting_.insert(waiting_.end(), samples.begin(), samples.end());
}

Transcription SphinxEngine::finish() {
  const auto start = std::chrono::steady_clock::now();
  decodeBlock(waiting_);
  if (isInPart_) endPart();
  model_->mean->end();
  Transcription result;
  result.text = text_;
  result.decode = std::chrono::duration_cast<std::chrono::microseconds>(
      std::chrono::steady_clock::now() - start);
  return result;
}

void SphinxEngine::decodeBlock(std::span<const std::int16_t> samples) {
  if (samples.empty()) return;
  model_->mean->hear(samples);
  ps_decoder_t* const decoder = model_->decoder.get();
  if (!isInPart_) {
    isInPart_ = ps_start_utt(decoder) == 0;
    partSamples_ = 0;
  }
  if (!isInPart_) return;
  ps_process_raw(decoder, samples.data(), samples.size(), FALSE, FALSE);
  partSamples_ += samples.size();
  const bool isPause = ps_get_in_speech(decoder) == 0;
  if ((partSamples_ >= kPartSamples && isPause) || partSamples_ >= kLongestPartSamples) endPart();
}

void SphinxEngine::endPart() {
  isInPart_ = false;
  ps_end_utt(model_->decoder.get());
  const char* const words = ps_get_hyp(model_->decoder.get(), nullptr);
  if (words == nullptr || *words == '\0') return;
  if (!text_.empty()) text_ += ' ';
  text_ += words;
}

std::string sphinxModelFolder() {
  return QUILLBACK_SPHINX_MODEL;
}

}  // namespace voxtrel::quillback
