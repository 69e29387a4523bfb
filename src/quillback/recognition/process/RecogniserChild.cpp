#include "quillback/recognition/process/RecogniserChild.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>

#include <array>
#include <cctype>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <system_error>
#include <utility>

#include "common/posix/SpawnedProgram.h"

namespace voxtrel::quillback {
namespace {

/// How long a child that has closed its socket may take to end.
constexpr std::chrono::milliseconds kEndOfChildTimeout{1000};

/// Returns the events that occurred; none at the timeout.
short waitForEvents(int descriptor, short events, std::chrono::milliseconds limit) {
  pollfd watched{descriptor, events, 0};
  const int ready = ::poll(&watched, 1, static_cast<int>(limit.count()));
  return ready > 0 ? watched.revents : short{0};
}

std::string describeSignal(int signal) {
  const char* const known = ::sigdescr_np(signal);
  std::string name = known == nullptr ? "unknown" : known;
  name[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(name[0])));
  // The kernel kills so when memory runs out.
  if (signal == SIGKILL) name += "; perhaps the memory is too small";
  return "signal " + std::to_string(signal) + ", " + name;
}

std::string describeStatus(int status) {
  if (WIFSIGNALED(status)) return describeSignal(WTERMSIG(status));
  return "exit status " + std::to_string(WEXITSTATUS(status));
}

tl::unexpected<std::string> notStarted(const std::error_code& error) {
  return tl::unexpected("cannot be started (" + error.message() + ")");
}

std::error_code lastSystemError() {
  return {errno, std::generic_category()};
}

}  // namespace

tl::expected<std::unique_ptr<RecogniserChild>, std::string> RecogniserChild::start(
    const std::vector<std::string>& words) {
  std::array<int, 2> ends{};
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0)
    return notStarted(lastSystemError());
  FileDescriptor ours(ends[0]);
  const FileDescriptor theirs(ends[1]);
  const auto id = spawnProgram(words, theirs.get());
  if (!id) return notStarted(id.error());
  FileDescriptor process(static_cast<int>(::syscall(SYS_pidfd_open, *id, 0)));
  if (!process.isOpen()) {
    const std::error_code error = lastSystemError();
    ::kill(*id, SIGKILL);
    ::waitpid(*id, nullptr, 0);
    return notStarted(error);
  }
  return std::unique_ptr<RecogniserChild>(
      new RecogniserChild(*id, std::move(process), std::move(ours)));
}

RecogniserChild::RecogniserChild(pid_t id, FileDescriptor process, FileDescriptor socket)
    : id_(id), process_(std::move(process)), socket_(std::move(socket)) {}

RecogniserChild::~RecogniserChild() {
  if (isReaped_) return;
  send(SIGKILL);
  while (::waitpid(id_, nullptr, 0) < 0 && errno == EINTR) continue;
}

bool RecogniserChild::hasEnded() const {
  return isReaped_ || waitForEvents(process_.get(), POLLIN, {}) != 0;
}

bool RecogniserChild::hitIllegalInstruction() const {
  return isReaped_ && WIFSIGNALED(status_) && WTERMSIG(status_) == SIGILL;
}

void RecogniserChild::interrupt() const {
  send(SIGUSR1);
}

/// By its descriptor, so that no other process can get it.
void RecogniserChild::send(int signal) const {
  ::syscall(SYS_pidfd_send_signal, process_.get(), signal, nullptr, 0);
}

bool RecogniserChild::flush() {
  std::string_view left = unsent_;
  while (!left.empty()) {
    const ssize_t count =
        ::send(socket_.get(), left.data(), left.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) break;
    left.remove_prefix(static_cast<std::size_t>(count));
  }
  unsent_.erase(0, unsent_.size() - left.size());
  return unsent_.empty();
}

tl::expected<std::optional<Message>, std::string> RecogniserChild::receive(
    std::chrono::milliseconds limit) {
  if (auto message = nextMessage(); !message || *message) return message;
  const bool isAllSent = flush();
  const int wanted = isAllSent ? POLLIN : POLLIN | POLLOUT;
  const short events = waitForEvents(socket_.get(), static_cast<short>(wanted), limit);
  if ((events & (POLLIN | POLLHUP | POLLERR)) == 0) return std::nullopt;
  std::array<char, 1 << 14> bytes{};
  const ssize_t count = ::recv(socket_.get(), bytes.data(), bytes.size(), MSG_DONTWAIT);
  if (count < 0 && (errno == EINTR || errno == EAGAIN)) return std::nullopt;
  if (count <= 0) return tl::unexpected(reasonOfEnd());
  received_.append({bytes.data(), static_cast<std::size_t>(count)});
  return nextMessage();
}

tl::expected<std::optional<Message>, std::string> RecogniserChild::nextMessage() {
  return received_.next().map_error(
      [](MessageReader::Broken /*error*/) { return std::string("sent a broken message"); });
}

/// The child has closed its socket, so it is ending.
std::string RecogniserChild::reasonOfEnd() {
  if (waitForEvents(process_.get(), POLLIN, kEndOfChildTimeout) == 0) {
    return "closed its connection";
  }
  isReaped_ = true;
  if (::waitpid(id_, &status_, WNOHANG) != id_) return "ended unexpectedly";
  return "ended unexpectedly (" + describeStatus(status_) + ")";
}

}  // namespace voxtrel::quillback
