#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>

#include "voxtrel/platform/Microphone.h"

namespace voxtrel {

/// Passes a tap's events on until it is closed. AVAudioEngine does not promise that a tap's block has
/// returned when the tap is removed.
/// Thread: any.
class TapGate {
 public:
  explicit TapGate(MicrophoneTapOptions options);

  /// Ignored once it is closed or a failure was reported.
  void pass(const AudioBuffer& buffer);
  /// Reports the first failure, ignores the others.
  void fail(std::string description);
  /// Nothing is called after this returns. Must not be called from a callback.
  void close();

 private:
  bool enter(bool isFailure);
  void leave();

  const MicrophoneTapOptions options_;
  std::mutex lock_;
  std::condition_variable left_;
  bool isClosed_ = false;
  bool hasFailed_ = false;
  int inside_ = 0;  ///< calls that run
};

}  // namespace voxtrel
