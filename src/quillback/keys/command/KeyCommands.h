#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include <tl/expected.hpp>

#include "common/posix/FileDescriptor.h"
#include "quillback/ports/KeyWatch.h"
#include "quillback/ports/Loop.h"

namespace voxtrel::quillback {

/// The commands of `quillback key`, each a word that one message of a local socket holds. The reply is
/// one message too.
inline constexpr std::string_view kKeyPress = "press";
inline constexpr std::string_view kKeyRelease = "release";
inline constexpr std::string_view kKeyToggle = "toggle";
/// Asks for a line about the running engine's key.
inline constexpr std::string_view kKeyStatus = "status";

/// The push-to-talk key by command, for desktops whose own settings run a program at a key. Listens at a
/// socket that only this user may use. The newest engine takes the path over.
/// Thread: the loop's.  Owns: the socket and its connections.  Borrows: Loop (must outlive this).
/// Fails by: null from `open`, an error's text as the reply.
class KeyCommands final : public KeyWatch {
 public:
  struct Callbacks {
    std::function<void()> onUsed;           ///< before each press
    std::function<std::string()> describe;  ///< the reply to kKeyStatus
  };

  /// `path` of the socket, in a folder that only this user may enter.
  [[nodiscard]] static std::unique_ptr<KeyCommands> open(const std::string& path, Listener listener,
                                                         Callbacks callbacks, Loop& loop);
  KeyCommands(const KeyCommands&) = delete;
  KeyCommands& operator=(const KeyCommands&) = delete;
  ~KeyCommands() override;

 private:
  struct Connection {
    FileDescriptor socket;
    std::unique_ptr<Loop::Watch> watch;
  };

  KeyCommands(std::string path, FileDescriptor socket, Listener listener, Callbacks callbacks,
              Loop& loop);
  void accept();
  void serve(int id);
  std::string reply(std::string_view word);
  void hold(bool isDown);

  std::string path_;
  FileDescriptor socket_;
  Listener listener_;
  Callbacks callbacks_;
  Loop& loop_;
  bool isHeld_ = false;
  int nextId_ = 0;
  std::map<int, Connection> connections_;
  std::unique_ptr<Loop::Watch> watch_;
};

/// Sends a command to the running engine and waits for its reply, a second at most.
/// Fails by: a sentence for people.
[[nodiscard]] tl::expected<std::string, std::string> sendKeyCommand(const std::string& path,
                                                                    std::string_view word);

}  // namespace voxtrel::quillback
