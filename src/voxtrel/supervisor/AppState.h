#pragma once

#include <string>

namespace voxtrel {

/// What the engine is doing, according to its output. An error is not a state: its text is in
/// EngineStatus::lastError.
enum class AppState {
  loading,     ///< started, not yet ready
  idle,        ///< ready
  recording,   ///< recording the microphone
  processing,  ///< working on what it recorded
  stopped,     ///< no engine runs: it ended, was given up on, is missing or could not be started
};

/// The engine's status at one moment.
struct EngineStatus {
  AppState state = AppState::loading;
  std::string lastText{};   ///< the last transcription; empty: none yet
  std::string lastError{};  ///< empty: none since the last start
};

}  // namespace voxtrel
