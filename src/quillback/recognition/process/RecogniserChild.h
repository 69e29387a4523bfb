#pragma once

#include <sys/types.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <tl/expected.hpp>

#include "common/posix/FileDescriptor.h"
#include "quillback/recognition/process/Message.h"

namespace voxtrel::quillback {

/// The running process of a recogniser, seen from the engine. Destroying this kills it and waits
/// for its end.
/// Thread: one, which must live as long as this: the child dies with the thread that started it.
/// Owns: the child, the engine's end of the socket pair.
/// Fails by: the reason, as the end of a sentence that begins with "The recogniser".
class RecogniserChild {
 public:
  /// `words`: a program that calls `serveRecogniser` on its standard input, and its arguments.
  static tl::expected<std::unique_ptr<RecogniserChild>, std::string> start(
      const std::vector<std::string>& words);
  RecogniserChild(const RecogniserChild&) = delete;
  RecogniserChild& operator=(const RecogniserChild&) = delete;
  ~RecogniserChild();

  bool hasEnded() const;
  /// Whether it ended by an instruction that the processor does not know.
  bool hitIllegalInstruction() const;
  /// Tells the child that its utterance is no longer wanted. It must have loaded.
  void interrupt() const;

  /// The message is sent by `flush` and `receive`.
  void queue(const Message& message) { unsent_ += encoded(message); }
  /// Sends what the child takes at once; returns whether all queued messages are sent.
  bool flush();
  /// The next message. Waits at most `limit` for it, and returns none earlier if the child takes
  /// more of what is queued.
  tl::expected<std::optional<Message>, std::string> receive(std::chrono::milliseconds limit);

 private:
  RecogniserChild(pid_t id, FileDescriptor process, FileDescriptor socket);

  tl::expected<std::optional<Message>, std::string> nextMessage();
  void send(int signal) const;
  std::string reasonOfEnd();

  const pid_t id_;
  const FileDescriptor process_;
  const FileDescriptor socket_;
  bool isReaped_ = false;
  int status_ = 0;  ///< once reaped
  std::string unsent_;
  MessageReader received_;
};

}  // namespace voxtrel::quillback
