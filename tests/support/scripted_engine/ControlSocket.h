#pragma once

#include <functional>
#include <string>

namespace scripted {

/// Takes orders from outside while the engine runs: lines over a local stream socket, each answered
/// by one line.
/// Thread: `listen` once, which starts a thread that ends with the process.
class ControlSocket {
 public:
  using Answer = std::function<std::string(const std::string& line)>;

  /// Takes the place of a socket that an earlier engine left at `path`. False: errno says why.
  static bool listen(const std::string& path, Answer answer);

  /// The other side: sends `line` to the engine that listens at `path`. Its answer; empty text if
  /// it ended meanwhile. Fails by: throwing std::system_error if no engine listens.
  static std::string ask(const std::string& path, const std::string& line);
};

}  // namespace scripted
