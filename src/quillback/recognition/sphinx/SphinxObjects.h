#pragma once

#include <pocketsphinx.h>

#include <memory>

namespace voxtrel::quillback {

/// Gives the library's objects back.
struct SphinxRelease {
  void operator()(ps_decoder_t* decoder) const { ps_free(decoder); }
  void operator()(cmd_ln_t* options) const { cmd_ln_free_r(options); }
  void operator()(fe_t* frontEnd) const { fe_free(frontEnd); }
};

using SphinxDecoder = std::unique_ptr<ps_decoder_t, SphinxRelease>;
using SphinxOptions = std::unique_ptr<cmd_ln_t, SphinxRelease>;
using SphinxFrontEnd = std::unique_ptr<fe_t, SphinxRelease>;

}  // namespace voxtrel::quillback
