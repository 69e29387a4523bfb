#include "voxtrel/platform/posix/OutputReader.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>

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

bool OutputReader::start() {
  try {
    thread_ = std::thread([this] { run(); });
  } catch (const std::system_error&) {
    return false;
  }
  return true;
}

void OutputReader::finish() {
  if (!thread_.joinable()) return;
  ended_.writeEnd.reset();
  thread_.join();
  output_.reset();
}

void OutputReader::run() {
  while (waitForOutput()) {
    if (readOnce(kReadSize) == 0) return;
  }
  readRest();
}

/// False once the child has ended.
bool OutputReader::waitForOutput() const {
  std::array<pollfd, 2> events{pollfd{output_.get(), POLLIN, 0},
                               pollfd{ended_.readEnd.get(), POLLIN, 0}};
  while (::poll(events.data(), events.size(), -1) < 0 && errno == EINTR) continue;
  return events[1].revents == 0;
}

/// Reports one read. Returns its bytes; 0 at the end of the stream.
std::size_t OutputReader::readOnce(std::size_t limit) {
  std::array<char, kReadSize> buffer;
  const std::size_t count = readSome(output_.get(), buffer.data(), std::min(limit, kReadSize));
  if (count > 0 && onOutput_) onOutput_({buffer.data(), count});
  return count;
}

/// Only what the pipe holds now can be the child's. Other writers could continue for ever.
void OutputReader::readRest() {
  int held = 0;
  if (::ioctl(output_.get(), FIONREAD, &held) != 0 || held < 0) return;
  auto rest = static_cast<std::size_t>(held);
  while (rest > 0) {
    const std::size_t count = readOnce(rest);
    if (count == 0) return;
    rest -= count;
  }
}

}  // namespace voxtrel
