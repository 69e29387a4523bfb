#include "quillback/insertion/paste/Pipes.h"

#include <fcntl.h>
#include <sys/epoll.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <utility>

namespace voxtrel::quillback {
namespace {

void unblock(const FileDescriptor& pipe) {
  ::fcntl(pipe.get(), F_SETFL, ::fcntl(pipe.get(), F_GETFL) | O_NONBLOCK);
}

}  // namespace

PipeWriter::PipeWriter(FileDescriptor pipe, std::string text, Loop& loop, OnEnd onEnd)
    : pipe_(std::move(pipe)),
      text_(std::move(text)),
      onEnd_(std::move(onEnd)),
      writable_(::epoll_create1(EPOLL_CLOEXEC)) {
  unblock(pipe_);
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
  if (const OnEnd onEnd = std::exchange(onEnd_, nullptr)) onEnd(written_ == text_.size());
}

PipeReader::PipeReader(FileDescriptor pipe, std::size_t limit, Loop& loop, OnEnd onEnd)
    : pipe_(std::move(pipe)), limit_(limit), onEnd_(std::move(onEnd)) {
  unblock(pipe_);
  watch_ = loop.watch(pipe_.get(), [this] { read(); });
}

void PipeReader::read() {
  std::array<char, 65536> part{};
  ssize_t size = 0;
  while ((size = ::read(pipe_.get(), part.data(), part.size())) > 0 && text_.size() <= limit_) {
    text_.append(part.data(), static_cast<std::size_t>(size));
  }
  if (size < 0 && (errno == EAGAIN || errno == EINTR)) return;
  if (size != 0) text_.clear();
  watch_.reset();
  const OnEnd onEnd = std::exchange(onEnd_, nullptr);
  onEnd(std::move(text_));
}

}  // namespace voxtrel::quillback
