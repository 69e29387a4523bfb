#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include <tl/expected.hpp>

#include "common/posix/StopSignals.h"
#include "quillback/model/ModelFolder.h"
#include "quillback/model/ModelPin.h"

namespace voxtrel::quillback {

/// Weights that the user brought, after copying.
struct OwnWeights {
  ModelFamily family = ModelFamily::whisper;
  std::string partFile;  ///< the copy: the final path with ".part" at its end
  std::uint64_t sizeBytes = 0;
  std::string sha256;
};

/// Enough of a file for `familyOfWeights`.
inline constexpr std::size_t kWeightsHeadBytes = 8;

/// Which family the weights belong to whose file begins with `head`. Only the format's mark and the
/// size of the vocabulary are looked at.
/// Fails by: what is wrong with the file, as half a sentence: "it …".
tl::expected<ModelFamily, std::string> familyOfWeights(std::string_view head);

/// Copies the weights in the file `source` to folder/fileName.part and prints progress. An earlier part
/// is overwritten. `folder` is locked.
/// Thread: any, which it blocks.
/// Fails by: a SetupFailure; the unfinished copy stays.
tl::expected<OwnWeights, SetupFailure> copyWeights(const std::string& source,
                                                   const ModelFolder& folder,
                                                   const std::string& fileName,
                                                   const StopSignals& stop, Output& output);

}  // namespace voxtrel::quillback
