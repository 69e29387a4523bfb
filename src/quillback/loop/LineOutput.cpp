#include "quillback/loop/LineOutput.h"

#include <fcntl.h>
#include <poll.h>
#include <sched.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <string>

#include "common/base/Lines.h"

namespace voxtrel::quillback {
namespace {

bool isOfKind(int fd, mode_t kind) {
  struct stat facts {};
  return ::fstat(fd, &facts) == 0 && (facts.st_mode & S_IFMT) == kind;
}

/// A pipe is opened again: O_NONBLOCK belongs to the open file, which other processes share with us.
FileDescriptor ownDescriptor(int fd) {
  if (isOfKind(fd, S_IFIFO)) {
    const std::string path = "/proc/self/fd/" + std::to_string(fd);
    FileDescriptor own(::open(path.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC));
    if (own.isOpen()) return own;
  }
  return FileDescriptor(::fcntl(fd, F_DUPFD_CLOEXEC, 3));
}

bool canWrite(int fd) {
  pollfd file{fd, POLLOUT, 0};
  return ::poll(&file, 1, 0) > 0;
}

}  // namespace

LineOutput::LineOutput(int fd)
    : file_(ownDescriptor(fd)),
      isSocket_(isOfKind(fd, S_IFSOCK)),
      flusherWakeUp_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

LineOutput::~LineOutput() {
  {
    const std::lock_guard lock(mutex_);
    stopped_ = true;
  }
  ::eventfd_write(flusherWakeUp_.get(), 1);
  if (flusher_.joinable()) flusher_.join();
}

void LineOutput::print(std::string_view line) {
  std::string whole = oneLine(line);
  whole += '\n';
  // The reader was woken on this processor: let it run before we continue.
  if (writeOrKeep(whole)) ::sched_yield();
}

/// Returns whether everything is written. Otherwise the flusher writes it, or it is lost.
bool LineOutput::writeOrKeep(std::string_view line) {
  const std::lock_guard lock(mutex_);
  if (!file_.isOpen() || waiting_.size() + line.size() > kMaxWaitingBytes) {
    hasLostLines_ = true;
    return false;
  }
  const bool othersWait = !waiting_.empty();
  waiting_ += line;
  if (!othersWait) writeWaiting();
  if (waiting_.empty()) return true;
  if (!flusher_.joinable()) flusher_ = std::thread([this] { flushUntilStopped(); });
  ::eventfd_write(flusherWakeUp_.get(), 1);
  return false;
}

bool LineOutput::hasLostLines() const {
  const std::lock_guard lock(mutex_);
  return hasLostLines_;
}

void LineOutput::writeWaiting() {
  while (!waiting_.empty() && canWrite(file_.get())) {
    const ssize_t written = writeSome();
    if (written >= 0) {
      waiting_.erase(0, static_cast<std::size_t>(written));
    } else if (errno == EAGAIN) {
      return;  // some room is free, but not enough
    } else if (errno != EINTR) {
      hasLostLines_ = true;
      waiting_.clear();  // the reader is gone
      file_.reset();
    }
  }
}

ssize_t LineOutput::writeSome() const {
  if (!isSocket_) return ::write(file_.get(), waiting_.data(), waiting_.size());
  return ::send(file_.get(), waiting_.data(), waiting_.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
}

void LineOutput::flushUntilStopped() {
  for (;;) {
    std::array<pollfd, 2> ready{{{flusherWakeUp_.get(), POLLIN, 0}, {-1, POLLOUT, 0}}};
    {
      const std::lock_guard lock(mutex_);
      if (stopped_) return;
      writeWaiting();
      if (!waiting_.empty()) ready[1].fd = file_.get();
    }
    ::poll(ready.data(), ready.size(), -1);
    eventfd_t count = 0;
    if (ready[0].revents != 0) ::eventfd_read(flusherWakeUp_.get(), &count);
  }
}

}  // namespace voxtrel::quillback
