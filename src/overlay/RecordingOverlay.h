#pragma once

namespace voxtrel {

/// The small pill that floats above everything while the engine records.
/// Thread: the main thread.
class RecordingOverlay {
 public:
  virtual ~RecordingOverlay() = default;

  /// Nothing happens when it is shown already.
  virtual void show() = 0;
  /// Nothing happens when it is hidden already.
  virtual void hide() = 0;
};

}  // namespace voxtrel
