#pragma once

#include <optional>
#include <string>
#include <vector>

#include <tl/expected.hpp>

#include "quillback/model/Manifest.h"

namespace voxtrel::quillback {

/// A complete model in the store.
struct StoredModel {
  std::string weightsFile;         ///< path
  std::string voiceDetectionFile;  ///< path; empty if there is none, or not as the manifest says
  ModelFamily family = ModelFamily::whisper;
  Manifest manifest;
};

/// Why the store has no usable weights of a model.
struct StoreFault {
  enum class Kind {
    absent,    ///< no manifest, or one that only names the chosen model
    embedded,  ///< set up by a build without Whisper: a manifest without weights
    damaged,   ///< the manifest is unreadable, or the weights are missing or have another size
  };

  Kind kind = Kind::absent;
  std::string why;  ///< one sentence, without a full stop
};

/// Looks at the store below the user's `home`: reads the manifest of `model` and compares the sizes
/// of its files, but never reads the weights.
/// Thread: any.
tl::expected<StoredModel, StoreFault> inspectStore(const std::string& home,
                                                   const std::string& model);

/// The manifest of `model`; nothing if it is missing or damaged.
std::optional<Manifest> readManifest(const std::string& home, const std::string& model);

/// The names of the models that the user brought, sorted; also those whose weights are damaged.
std::vector<std::string> customModels(const std::string& home);

}  // namespace voxtrel::quillback
