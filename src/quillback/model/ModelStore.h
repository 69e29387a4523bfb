#pragma once

#include <string>

namespace voxtrel::quillback {

/// What the store holds of one model.
struct StoreState {
  enum class Kind {
    absent,    ///< no manifest
    embedded,  ///< set up by a build without Whisper: a manifest, but no weights
    complete,  ///< the weights are there in their right size
    damaged,   ///< a manifest that is unreadable, or that promises files which are not there
  };

  Kind kind = Kind::absent;
  std::string weightsFile;  ///< path of the weights; only of a complete model
  std::string why;          ///< one sentence, without a full stop; empty where complete
};

/// Looks at the store below the user's `home`: reads the manifest and compares sizes, never the weights' bytes.
/// Thread: any. Fails by: `damaged` with the reason.
StoreState inspectStore(const std::string& home, const std::string& model);

}  // namespace voxtrel::quillback
