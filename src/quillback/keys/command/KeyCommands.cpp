#include "quillback/keys/command/KeyCommands.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <optional>
#include <utility>

namespace voxtrel::quillback {
namespace {

/// Of clients that have connected and send nothing; the oldest is given up.
constexpr std::size_t kMaxConnections = 8;
constexpr std::size_t kMaxWordBytes = 64;
constexpr std::size_t kMaxReplyBytes = 1024;
constexpr mode_t kOwnerOnly = 0600;

/// Nothing if the path is too long for a socket.
std::optional<sockaddr_un> addressOf(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.empty() || path.size() >= sizeof address.sun_path) return std::nullopt;
  std::memcpy(static_cast<char*>(address.sun_path), path.data(), path.size());
  return address;
}

/// The system calls take the address of any family.
const sockaddr* generic(const sockaddr_un& address) {
  return static_cast<const sockaddr*>(static_cast<const void*>(&address));
}

bool isOurs(int socket) {
  ucred peer{};
  socklen_t size = sizeof peer;
  return ::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 &&
         peer.uid == ::geteuid();
}

/// A socket that listens under a name of its own and then takes over `path` in one step, so that a client
/// always finds an engine.
FileDescriptor listenAt(const std::string& path) {
  const std::string draft = path + '.' + std::to_string(::getpid());
  const auto address = addressOf(draft);
  if (!address) return {};
  FileDescriptor socket(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  ::unlink(draft.c_str());
  const bool listens = ::bind(socket.get(), generic(*address), sizeof *address) == 0 &&
                       ::chmod(draft.c_str(), kOwnerOnly) == 0 &&
                       ::listen(socket.get(), kMaxConnections) == 0 &&
                       std::rename(draft.c_str(), path.c_str()) == 0;
  if (listens) return socket;
  ::unlink(draft.c_str());
  return {};
}

/// Whether a client of `path` would reach the engine with this process id.
bool leadsTo(const std::string& path, pid_t engine) {
  const auto address = addressOf(path);
  const FileDescriptor socket(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  if (!address || ::connect(socket.get(), generic(*address), sizeof *address) != 0) return false;
  ucred peer{};
  socklen_t size = sizeof peer;
  return ::getsockopt(socket.get(), SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 &&
         peer.pid == engine;
}

}  // namespace

std::unique_ptr<KeyCommands> KeyCommands::open(const std::string& path, Listener listener,
                                               Callbacks callbacks, Loop& loop) {
  FileDescriptor socket = listenAt(path);
  if (!socket.isOpen()) return nullptr;
  std::unique_ptr<KeyCommands> commands(
      new KeyCommands(path, std::move(socket), std::move(listener), std::move(callbacks), loop));
  commands->watch_ =
      loop.watch(commands->socket_.get(), [self = commands.get()] { self->accept(); });
  return commands;
}

KeyCommands::KeyCommands(std::string path, FileDescriptor socket, Listener listener,
                         Callbacks callbacks, Loop& loop)
    : path_(std::move(path)),
      socket_(std::move(socket)),
      listener_(std::move(listener)),
      callbacks_(std::move(callbacks)),
      loop_(loop) {}

KeyCommands::~KeyCommands() {
  if (leadsTo(path_, ::getpid())) ::unlink(path_.c_str());
}

void KeyCommands::accept() {
  FileDescriptor socket(::accept4(socket_.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
  if (!socket.isOpen() || !isOurs(socket.get())) return;
  if (connections_.size() >= kMaxConnections) connections_.erase(connections_.begin());
  const int id = nextId_++;
  auto watch = loop_.watch(socket.get(), [this, id] { serve(id); });
  connections_.emplace(id, Connection{std::move(socket), std::move(watch)});
}

void KeyCommands::serve(int id) {
  const auto connection = connections_.extract(id);
  if (connection.empty()) return;
  const int socket = connection.mapped().socket.get();
  std::array<char, kMaxWordBytes> word{};
  const ssize_t size = ::recv(socket, word.data(), word.size(), 0);
  if (size <= 0) return;
  const std::string answer = reply({word.data(), static_cast<std::size_t>(size)});
  ::send(socket, answer.data(), answer.size(), MSG_NOSIGNAL);
}

std::string KeyCommands::reply(std::string_view word) {
  if (word == kKeyStatus) return callbacks_.describe();
  if (word != kKeyPress && word != kKeyRelease && word != kKeyToggle) return "unknown command";
  hold(word == kKeyToggle ? !isHeld_ : word == kKeyPress);
  return "ok";
}

void KeyCommands::hold(bool isDown) {
  if (std::exchange(isHeld_, isDown) == isDown) return;
  if (!isDown) return listener_.onReleased();
  callbacks_.onUsed();
  listener_.onPressed();
}

tl::expected<std::string, std::string> sendKeyCommand(const std::string& path,
                                                      std::string_view word) {
  if (path.empty()) return tl::make_unexpected("XDG_RUNTIME_DIR is not set");
  const auto address = addressOf(path);
  const FileDescriptor socket(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
  if (!address || ::connect(socket.get(), generic(*address), sizeof *address) != 0) {
    return tl::make_unexpected("no engine is running");
  }
  if (!isOurs(socket.get())) return tl::make_unexpected("the engine is another user's");
  const timeval limit{1, 0};
  ::setsockopt(socket.get(), SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
  std::array<char, kMaxReplyBytes> answer{};
  ::send(socket.get(), word.data(), word.size(), MSG_NOSIGNAL);
  const ssize_t size = ::recv(socket.get(), answer.data(), answer.size(), 0);
  if (size <= 0) return tl::make_unexpected("the engine does not answer");
  return std::string(answer.data(), static_cast<std::size_t>(size));
}

}  // namespace voxtrel::quillback
