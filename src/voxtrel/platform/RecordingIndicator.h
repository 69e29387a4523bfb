#pragma once

namespace voxtrel {

/// Shows the user that the engine is recording.
/// Thread: the main thread.
class RecordingIndicator {
 public:
  virtual ~RecordingIndicator() = default;

  /// Does nothing if already shown.
  virtual void show() = 0;
  /// Does nothing if already hidden.
  virtual void hide() = 0;
};

}  // namespace voxtrel
