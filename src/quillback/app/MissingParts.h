#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "quillback/insertion/clipboard/ChildRun.h"
#include "quillback/ports/Output.h"

namespace voxtrel::quillback {

/// Tells the user by one notification what dictation lacks here: the key, the microphone. The key is told
/// again if it gets lost later.
/// Thread: the loop's.  Owns: the process that looks for a microphone.  Borrows: Loop, Output (must
/// outlive this).
/// Fails by: telling nothing.
class MissingParts {
 public:
  using Notify = std::function<void(const std::string& title, const std::string& body)>;

  MissingParts(Loop& loop, Output& output, Notify notify);

  void keyIsSeen();
  /// `text`: why not, for people.
  void keyIsMissing(const std::string& text);
  /// Looks for a microphone, once and in another process: what the library of the sound server needs stays
  /// out of this one's memory. Called once the model is loaded, which this would slow down.
  void lookForMicrophone();

 private:
  void foundMicrophone(int exitStatus);
  void tell();

  Loop& loop_;
  Output& output_;
  const Notify notify_;
  // What is to be told; empty if nothing, no value while that is not known.
  std::optional<std::string> key_;
  std::optional<std::string> microphone_;
  std::unique_ptr<ChildRun> search_;
};

/// What that process does; returns its exit status.
int searchMicrophone();

}  // namespace voxtrel::quillback
