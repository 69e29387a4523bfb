#include "support/scripted_engine/ControlSocket.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <string_view>
#include <system_error>
#include <thread>

namespace scripted {
namespace {

bool fillAddress(const std::string& path, sockaddr_un& address) {
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path) {
    errno = ENAMETOOLONG;
    return false;
  }
  path.copy(&address.sun_path[0], path.size());
  return true;
}

const sockaddr* generic(const sockaddr_un& address) {
  return reinterpret_cast<const sockaddr*>(&address);
}

/// A local stream socket that no program inherits and whose broken end raises no signal.
int openSocket() {
  const int made = ::socket(AF_UNIX, SOCK_STREAM, 0);
  ::fcntl(made, F_SETFD, FD_CLOEXEC);
#if defined(SO_NOSIGPIPE)
  constexpr int kOn = 1;
  ::setsockopt(made, SOL_SOCKET, SO_NOSIGPIPE, &kOn, sizeof kOn);
#endif
  return made;
}

bool sendLine(int connection, std::string line) {
#if defined(MSG_NOSIGNAL)
  constexpr int kFlags = MSG_NOSIGNAL;
#else
  constexpr int kFlags = 0;
#endif
  line += '\n';
  return ::send(connection, line.data(), line.size(), kFlags) == static_cast<ssize_t>(line.size());
}

/// Takes the next line out of `buffer`, reading on where it holds none. False at the end.
bool receiveLine(int connection, std::string& buffer, std::string& line) {
  std::size_t end = 0;
  while ((end = buffer.find('\n')) == std::string::npos) {
    std::array<char, 4096> bytes{};
    const ssize_t count = ::read(connection, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    buffer.append(bytes.data(), static_cast<std::size_t>(count));
  }
  line = buffer.substr(0, end);
  buffer.erase(0, end + 1);
  return true;
}

void serve(int connection, const ControlSocket::Answer& answer) {
  std::string buffer;
  std::string line;
  while (receiveLine(connection, buffer, line)) {
    if (!sendLine(connection, answer(line))) break;
  }
  ::close(connection);
}

}  // namespace

bool ControlSocket::listen(const std::string& path, Answer answer) {
  sockaddr_un address{};
  if (!fillAddress(path, address)) return false;
  const int listener = openSocket();
  ::unlink(path.c_str());
  if (::bind(listener, generic(address), sizeof address) != 0 || ::listen(listener, 16) != 0) {
    return false;
  }
  std::thread([listener, answer = std::move(answer)] {
    for (;;) {
      const int connection = ::accept(listener, nullptr, nullptr);
      if (connection >= 0) std::thread(serve, connection, answer).detach();
    }
  }).detach();
  return true;
}

std::string ControlSocket::ask(const std::string& path, const std::string& line) {
  sockaddr_un address{};
  const int connection = openSocket();
  if (!fillAddress(path, address) || ::connect(connection, generic(address), sizeof address) != 0) {
    throw std::system_error(errno, std::generic_category(), path);
  }
  std::string buffer;
  std::string answer;
  if (sendLine(connection, line)) receiveLine(connection, buffer, answer);
  ::close(connection);
  return answer;
}

}  // namespace scripted
