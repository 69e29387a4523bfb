#pragma once

#include <cstdint>
#include <span>

#include "quillback/recognition/sphinx/CepstralMean.h"
#include "quillback/recognition/sphinx/SphinxObjects.h"

namespace voxtrel::quillback {

/// Hears the same samples as the decoder, a little earlier, and hands it the mean that its features are
/// to be freed of. The decoder's own mean would carry over from one utterance to the next, so that
/// the same words were understood differently each time.
/// Thread: one.  Owns: a front end like the decoder's.  Borrows: the decoder (must outlive this).
class MeanWatch {
 public:
  /// `decoder` has heard nothing yet. `options` are those it was made with.
  MeanWatch(ps_decoder_t* decoder, cmd_ln_t* options);

  bool isUsable() const { return frontEnd_ != nullptr; }
  void begin();
  void hear(std::span<const std::int16_t> samples);
  void end();

 private:
  void handOver();

  ps_decoder_t* const decoder_;
  const SphinxFrontEnd frontEnd_;
  CepstralMean mean_;
};

}  // namespace voxtrel::quillback
