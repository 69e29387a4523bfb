#include "quillback/recognition/process/RecogniserServer.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/socket.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <utility>

#include "common/posix/Confinement.h"
#include "common/posix/FileDescriptor.h"
#include "quillback/recognition/process/Message.h"

namespace voxtrel::quillback {
namespace {

/// Set by the signal and cleared by the `drop` message that follows it, so that no signal counts
/// for a later utterance.
std::atomic<bool> isServedUtteranceDropped{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler sets it");

void handleDropSignal(int /*signal*/) {
  isServedUtteranceDropped = true;
}

void installDropSignal() {
  struct sigaction action {};
  action.sa_handler = handleDropSignal;
  action.sa_flags = SA_RESTART;
  ::sigaction(SIGUSR1, &action, nullptr);
}

/// False if the parent has already ended: nothing would kill us then.
bool endWithParent(int socket) {
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  pollfd parent{socket, POLLRDHUP, 0};
  return ::poll(&parent, 1, 0) == 0;
}

/// Moves the socket away from the standard streams and gives these to /dev/null: a library may
/// print or read.
FileDescriptor takeSocket(int socket) {
  constexpr int kMinNumber = STDERR_FILENO + 1;
  FileDescriptor own(::fcntl(socket, F_DUPFD_CLOEXEC, kMinNumber));
  const FileDescriptor null(::open("/dev/null", O_RDWR | O_CLOEXEC));
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    ::dup2(null.get(), stream);
  }
  return own;
}

/// Answers one message after the other.
/// Thread: one.  Owns: the socket.  Borrows: the backend.
/// Fails by: false or none, when the engine is gone or sent something broken.
class RecogniserServer {
 public:
  RecogniserServer(FileDescriptor socket, RecogniserBackend& backend)
      : socket_(std::move(socket)), backend_(backend) {}

  bool load() {
    const LoadReport report = backend_.load();
    return send(loadedMessage(report)) && report.isUsable;
  }
  bool answerNext() {
    const auto message = receive();
    return message && answer(*message);
  }

 private:
  std::optional<Message> receive();
  bool answer(const Message& message);
  bool feed(const Message& message);
  bool finish();
  bool drop();
  bool send(const Message& message) const;

  const FileDescriptor socket_;
  RecogniserBackend& backend_;
  MessageReader reader_;
};

std::optional<Message> RecogniserServer::receive() {
  for (;;) {
    auto message = reader_.next();
    if (!message) return {};
    if (*message) return std::move(**message);
    std::array<char, 1 << 16> bytes{};
    const ssize_t count = ::recv(socket_.get(), bytes.data(), bytes.size(), 0);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return {};
    reader_.append({bytes.data(), static_cast<std::size_t>(count)});
  }
}

bool RecogniserServer::answer(const Message& message) {
  switch (message.kind) {
    case Message::Kind::begin:
      backend_.begin(isServedUtteranceDropped);
      return true;
    case Message::Kind::samples:
      return feed(message);
    case Message::Kind::finish:
      return finish();
    case Message::Kind::drop:
      return drop();
    case Message::Kind::loaded:
    case Message::Kind::result:
    case Message::Kind::dropped:
      break;
  }
  return false;
}

bool RecogniserServer::feed(const Message& message) {
  const auto samples = readSamples(message);
  if (samples && !isServedUtteranceDropped) backend_.feed(*samples);
  return samples.has_value();
}

bool RecogniserServer::finish() {
  if (isServedUtteranceDropped) return true;  // `drop` follows
  return send(resultMessage(backend_.finish()));
}

bool RecogniserServer::drop() {
  isServedUtteranceDropped = true;
  backend_.drop();
  isServedUtteranceDropped = false;
  return send({Message::Kind::dropped, {}});
}

bool RecogniserServer::send(const Message& message) const {
  const std::string bytes = encoded(message);
  std::string_view left = bytes;
  while (!left.empty()) {
    const ssize_t count = ::send(socket_.get(), left.data(), left.size(), MSG_NOSIGNAL);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return false;
    left.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

}  // namespace

int serveRecogniser(int socket, RecogniserBackend& backend) {
  installDropSignal();
  if (!endWithParent(socket)) return 1;
  leaveNoCore();  // it would hold the whole model, and the engine would wait for its last byte
  RecogniserServer server(takeSocket(socket), backend);
  if (!server.load()) return 1;
  while (server.answerNext()) continue;
  return 0;
}

}  // namespace voxtrel::quillback
