#pragma once

namespace voxtrel {

/// What the engine is doing, as far as its output tells. Errors are not a state; their text stands
/// beside it (ProcessManager::lastError).
enum class AppState {
  loading,     ///< started, not yet ready
  idle,        ///< ready
  recording,   ///< recording the microphone
  processing,  ///< working on what it recorded
  stopped,     ///< no engine runs: it ended, was given up on, is missing or could not be started
};

}  // namespace voxtrel
