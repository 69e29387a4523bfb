#include "quillback/recognition/sphinx/MeanWatch.h"

#include <vector>

namespace voxtrel::quillback {
namespace {

constexpr std::size_t kSamplesPerFrame = 160;

std::vector<float> initialMean(ps_decoder_t* decoder) {
  const cmn_t* state = ps_get_feat(decoder)->cmn_struct;
  return {state->cmn_mean, state->cmn_mean + state->veclen};
}

}  // namespace

MeanWatch::MeanWatch(ps_decoder_t* decoder, cmd_ln_t* options)
    : decoder_(decoder), frontEnd_(fe_init_auto_r(options)), mean_(initialMean(decoder)) {}

void MeanWatch::begin() {
  mean_.reset();
  fe_start_stream(frontEnd_.get());
  fe_start_utt(frontEnd_.get());
  handOver();
}

void MeanWatch::hear(std::span<const std::int16_t> samples) {
  const std::size_t width = mean_.mean().size();
  // A second of speech that was taken for silence can come out at once.
  std::size_t rows = samples.size() / kSamplesPerFrame + 100;
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
      // The mean is that of speech: frames without energy are none.
      const std::span<const float> cepstrum(row[static_cast<std::size_t>(at)], width);
      if (cepstrum[0] >= 0) mean_.add(cepstrum);
    }
    if (frames == 0 && left == before) break;
  }
  handOver();
}

void MeanWatch::end() {
  std::vector<float> last(mean_.mean().size());
  int32 frames = 0;
  fe_end_utt(frontEnd_.get(), last.data(), &frames);
}

void MeanWatch::handOver() {
  cmn_live_set(ps_get_feat(decoder_)->cmn_struct, mean_.mean().data());
}

}  // namespace voxtrel::quillback
