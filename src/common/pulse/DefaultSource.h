#pragma once

#include <chrono>

namespace voxtrel {

/// What a search for a microphone found.
enum class SourceSearch {
  found,
  noServer,
  noSource,  ///< or the server would record what it plays
  unknown    ///< no reply in time, or another failure
};

/// Asks the sound server for its default source, without opening it. Loads libpulse, so it is meant for a
/// process that ends soon.
/// Thread: any; waits up to `timeout`.
[[nodiscard]] SourceSearch searchDefaultSource(std::chrono::milliseconds timeout);

/// The same, but waits while there is no source, without polling, for as long as it takes. Any failure counts
/// as `noServer`.
[[nodiscard]] SourceSearch awaitDefaultSource();

}  // namespace voxtrel
