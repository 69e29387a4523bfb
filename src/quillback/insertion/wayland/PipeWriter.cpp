#include "quillback/insertion/wayland/PipeWriter.h"

#include <fcntl.h>
#include <sys/epoll.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace voxtrel::quillback {

PipeWriter::PipeWriter(FileDescriptor pipe, std::string text, Loop& loop)
    : pipe_(std::move(pipe)), text_(std::move(text)), writable_(::epoll_create1(EPOLL_CLOEXEC)) {
  ::fcntl(pipe_.get(), F_SETFL, ::fcntl(pipe_.get(), F_GETFL) | O_NONBLOCK);
  write();
  if (isDone()) return;
  // The loop waits for what can be read; an epoll can be when one of its descriptors is ready.
  epoll_event event{};
  event.events = EPOLLOUT;
  ::epoll_ctl(writable_.get(), EPOLL_CTL_ADD, pipe_.get(), &event);
  watch_ = loop.watch(writable_.get(), [this] { write(); });
}

void PipeWriter::write() {
  while (written_ < text_.size()) {
    const ssize_t size = ::write(pipe_.get(), text_.data() + written_, text_.size() - written_);
    if (size < 0 && errno == EAGAIN) return;
    if (size < 0 && errno != EINTR) break;
    if (size > 0) written_ += static_cast<std::size_t>(size);
  }
  watch_.reset();
  pipe_.reset();
}

}  // namespace voxtrel::quillback
