#pragma once

#include <string>

#include <tl/expected.hpp>

#include "quillback/model/Manifest.h"

namespace voxtrel::quillback {

/// A complete Whisper model in the store.
struct StoredModel {
  std::string weightsFile;  ///< path
  Manifest manifest;
};

/// Why the store has no usable weights of a model.
struct StoreFault {
  enum class Kind {
    absent,    ///< no manifest
    embedded,  ///< set up by a build without Whisper: a manifest without weights
    damaged,   ///< the manifest is unreadable, or its files are missing or have other sizes
  };

  Kind kind = Kind::absent;
  std::string why;  ///< one sentence, without a full stop
};

/// Looks at the store below the user's `home`: reads the manifest of `model` and compares the sizes
/// of its files, but never reads the weights.
/// Thread: any.
tl::expected<StoredModel, StoreFault> inspectStore(const std::string& home,
                                                   const std::string& model);

}  // namespace voxtrel::quillback
