#pragma once

#include <functional>
#include <optional>
#include <string>

#include "quillback/ports/Output.h"

namespace voxtrel::quillback {

/// Tells the user by one notification what dictation lacks here: the key, the microphone. Waits for the
/// model, without which nothing works either. The key is told again if it gets lost later.
/// Thread: the loop's.  Borrows: Output (must outlive this).
/// Fails by: telling nothing.
class MissingParts {
 public:
  using Notify = std::function<void(const std::string& title, const std::string& body)>;

  MissingParts(Output& output, Notify notify);

  void keyIsSeen();
  /// `text`: why not, for people.
  void keyIsMissing(const std::string& text);
  void microphoneIsThere();
  void microphoneIsMissing(const std::string& text);
  void modelIsLoaded();

 private:
  void tell();

  Output& output_;
  const Notify notify_;
  // What is to be told; empty if nothing, no value while that is not known.
  std::optional<std::string> key_;
  std::optional<std::string> microphone_;
  bool isModelLoaded_ = false;
  bool isMicrophoneTold_ = false;
};

}  // namespace voxtrel::quillback
