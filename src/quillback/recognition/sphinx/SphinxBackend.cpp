#include "quillback/recognition/sphinx/SphinxBackend.h"

#include <pocketsphinx.h>
#include <sphinxbase/err.h>

#include <utility>

#include "common/base/Handle.h"
#include "quillback/recognition/sphinx/CepstralMean.h"

namespace voxtrel::quillback {
namespace {

constexpr std::size_t kSamplesPerFrame = 160;

using Decoder = Handle<ps_decoder_t, ps_free>;
using DecoderOptions = Handle<cmd_ln_t, cmd_ln_free_r>;
using FrontEnd = Handle<fe_t, fe_free>;

DecoderOptions readOptions(const std::string& folder) {
  return DecoderOptions(cmd_ln_init(nullptr, ps_args(), TRUE, "-hmm", (folder + "/en-us").c_str(),
                                    "-lm", (folder + "/en-us.lm.bin").c_str(), "-dict",
                                    (folder + "/cmudict-en-us.dict").c_str(), nullptr));
}

std::vector<float> initialMean(ps_decoder_t* decoder) {
  const cmn_t* state = ps_get_feat(decoder)->cmn_struct;
  return {state->cmn_mean, state->cmn_mean + state->veclen};
}

/// Gets each block before the decoder does and gives the decoder the mean to subtract. The
/// decoder's own mean carries over from one utterance to the next, so the same words would be
/// recognised differently each time.
/// Thread: one.  Owns: a front end like the decoder's.  Borrows: the decoder (must outlive this).
class MeanTracker {
 public:
  /// `decoder` has decoded nothing yet and was made with `options`.
  MeanTracker(ps_decoder_t* decoder, cmd_ln_t* options)
      : decoder_(decoder), frontEnd_(fe_init_auto_r(options)), mean_(initialMean(decoder)) {}

  bool isUsable() const { return frontEnd_ != nullptr; }

  void begin() {
    mean_.reset();
    fe_start_stream(frontEnd_.get());
    fe_start_utt(frontEnd_.get());
    updateDecoder();
  }

  void feed(std::span<const std::int16_t> samples);

  void end() {
    std::vector<float> last(mean_.mean().size());
    int32 frames = 0;
    fe_end_utt(frontEnd_.get(), last.data(), &frames);
  }

 private:
  void updateDecoder() { cmn_live_set(ps_get_feat(decoder_)->cmn_struct, mean_.mean().data()); }

  ps_decoder_t* const decoder_;
  const FrontEnd frontEnd_;
  CepstralMean mean_;
};

void MeanTracker::feed(std::span<const std::int16_t> samples) {
  const std::size_t width = mean_.mean().size();
  // Up to a second of speech that was first taken for silence can come out at once.
  const std::size_t rows = samples.size() / kSamplesPerFrame + 100;
  std::vector<float> cepstra(rows * width);
  std::vector<float*> row(rows);
  for (std::size_t at = 0; at < rows; ++at) row[at] = &cepstra[at * width];

  const int16* next = samples.data();
  std::size_t left = samples.size();
  while (left > 0) {
    auto frames = static_cast<int32>(rows);
    int32 firstFrame = 0;
    const std::size_t before = left;
    if (fe_process_frames(frontEnd_.get(), &next, &left, row.data(), &frames, &firstFrame) < 0)
      break;
    for (int32 at = 0; at < frames; ++at) {
      // Frames without energy are not speech.
      const std::span<const float> cepstrum(row[static_cast<std::size_t>(at)], width);
      if (cepstrum[0] >= 0) mean_.add(cepstrum);
    }
    if (frames == 0 && left == before) break;
  }
  updateDecoder();
}

}  // namespace

struct SphinxBackend::Model {
  explicit Model(const std::string& folder)
      : options(readOptions(folder)), decoder(options ? ps_init(options.get()) : nullptr) {
    if (decoder) mean = std::make_unique<MeanTracker>(decoder.get(), options.get());
  }

  bool isUsable() const { return mean && mean->isUsable(); }

  const DecoderOptions options;
  const Decoder decoder;
  std::unique_ptr<MeanTracker> mean;
};

SphinxBackend::SphinxBackend(std::string modelFolder) : modelFolder_(std::move(modelFolder)) {}

SphinxBackend::~SphinxBackend() = default;

LoadReport SphinxBackend::load() {
  // The library logs everything to standard error, where our own lines may go.
  err_set_logfp(nullptr);
  model_ = std::make_unique<Model>(modelFolder_);
  if (model_->isUsable()) return {true, {}};
  return {false,
          {"[quillback] ERROR The embedded recogniser cannot load its model from " + modelFolder_ +
           "; install the package pocketsphinx-en-us."}};
}

void SphinxBackend::begin(const std::atomic<bool>& /*isDropped*/) {
  drop();  // if no caller did
  text_.clear();
  block_.clear();
  blockSamples_ = kFirstBlockSamples;
  ps_start_stream(model_->decoder.get());
  model_->mean->begin();
}

void SphinxBackend::feed(std::span<const std::int16_t> samples) {
  while (block_.size() + samples.size() >= blockSamples_) {
    const auto rest = samples.first(blockSamples_ - block_.size());
    block_.insert(block_.end(), rest.begin(), rest.end());
    decodeBlock(block_);
    block_.clear();
    blockSamples_ = kBlockSamples;
    samples = samples.subspan(rest.size());
  }
  block_.insert(block_.end(), samples.begin(), samples.end());
}

Transcription SphinxBackend::finish() {
  const auto start = std::chrono::steady_clock::now();
  decodeBlock(block_);
  if (isInPart_) endPart();
  model_->mean->end();
  Transcription result;
  result.text = text_;
  result.decode = std::chrono::duration_cast<std::chrono::microseconds>(
      std::chrono::steady_clock::now() - start);
  return result;
}

/// The front end needs no end: its next start forgets what it holds.
void SphinxBackend::drop() {
  if (isInPart_) endPart();
}

void SphinxBackend::decodeBlock(std::span<const std::int16_t> samples) {
  if (samples.empty()) return;
  model_->mean->feed(samples);
  ps_decoder_t* const decoder = model_->decoder.get();
  if (!isInPart_) {
    isInPart_ = ps_start_utt(decoder) == 0;
    partSamples_ = 0;
  }
  if (!isInPart_) return;
  ps_process_raw(decoder, samples.data(), samples.size(), FALSE, FALSE);
  partSamples_ += samples.size();
  const bool isPause = ps_get_in_speech(decoder) == 0;
  if ((partSamples_ >= kPartSamples && isPause) || partSamples_ >= kMaxPartSamples) endPart();
}

void SphinxBackend::endPart() {
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
