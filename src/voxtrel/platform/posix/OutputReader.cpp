#include "voxtrel/platform/posix/OutputReader.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

namespace voxtrel {
namespace {

constexpr std::size_t kReadSize = 65536;  // what a pipe holds

/// Bytes read; 0 at the end of the stream or at an error, which is as final.
std::size_t readSome(int descriptor, char* buffer, std::size_t size) {
  ssize_t count = 0;
  do {
    count = ::read(descriptor, buffer, size);
  } while (count < 0 && errno == EINTR);
  return count > 0 ? static_cast<std::size_t>(count) : 0;
}

}  // namespace

Pipe requirePipe() {
  auto pipe = Pipe::open();
  if (!pipe) throw std::system_error(pipe.error());
  return std::move(*pipe);
}

OutputReader::OutputReader(FileDescriptor output, Take take)
    : output_(std::move(output)), take_(std::move(take)), ended_(requirePipe()) {}

void OutputReader::start() {
  thread_ = std::thread([this] { run(); });
}

void OutputReader::finish() {
  if (!thread_.joinable()) return;
  ended_.writeEnd.reset();
  thread_.join();
  output_.reset();
}

void OutputReader::run() {
  while (waitForOutput()) {
    if (takeOnce(kReadSize) == 0) return;
  }
  takeRest();
}

/// False once the child has ended.
bool OutputReader::waitForOutput() const {
  std::array<pollfd, 2> events{pollfd{output_.get(), POLLIN, 0},
                               pollfd{ended_.readEnd.get(), POLLIN, 0}};
  while (::poll(events.data(), events.size(), -1) < 0 && errno == EINTR) continue;
  return events[1].revents == 0;
}

/// Bytes taken; 0 at the end of the stream.
std::size_t OutputReader::takeOnce(std::size_t limit) {
  std::array<char, kReadSize> buffer;
  const std::size_t count = readSome(output_.get(), buffer.data(), std::min(limit, kReadSize));
  if (count > 0 && take_) take_({buffer.data(), count});
  return count;
}

/// Only what the pipe holds now can be the child's; others who have it open may write on for ever.
void OutputReader::takeRest() {
  int held = 0;
  if (::ioctl(output_.get(), FIONREAD, &held) != 0 || held < 0) return;
  auto rest = static_cast<std::size_t>(held);
  while (rest > 0) {
    const std::size_t count = takeOnce(rest);
    if (count == 0) return;
    rest -= count;
  }
}

}  // namespace voxtrel
