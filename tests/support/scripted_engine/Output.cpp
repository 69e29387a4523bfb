#include "support/scripted_engine/Output.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <thread>

namespace scripted {
namespace {

constexpr std::size_t kBlockSize = 65536;

void writeAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
    if (count < 0 && errno != EINTR) return;
    if (count > 0) bytes.remove_prefix(static_cast<std::size_t>(count));
  }
}

/// `size` bytes made of `block` repeated.
void writeRepeated(std::string_view block, unsigned long long size) {
  while (size > 0) {
    const auto count = static_cast<std::size_t>(std::min<unsigned long long>(size, block.size()));
    writeAll(STDOUT_FILENO, block.substr(0, count));
    size -= count;
  }
}

}  // namespace

void Output::split(std::size_t size, std::chrono::milliseconds pause) {
  const std::lock_guard lock(mutex_);
  pieceSize_ = size;
  pause_ = pause;
}

void Output::write(std::string_view bytes, Stream stream) {
  const std::lock_guard lock(mutex_);
  const std::size_t size = pieceSize_ > 0 ? pieceSize_ : std::max<std::size_t>(bytes.size(), 1);
  while (!bytes.empty()) {
    writeAll(static_cast<int>(stream), bytes.substr(0, size));
    bytes.remove_prefix(std::min(size, bytes.size()));
    if (!bytes.empty()) std::this_thread::sleep_for(pause_);
  }
}

void Output::flood(unsigned long long size, std::string_view line) {
  if (size == 0) return;
  const std::lock_guard lock(mutex_);
  std::string block;
  do {
    block.append(line).append(1, '\n');
  } while (block.size() < kBlockSize);
  writeRepeated(block, size - 1);
  writeAll(STDOUT_FILENO, "\n");
}

void Output::longLine(unsigned long long size) {
  const std::lock_guard lock(mutex_);
  writeRepeated(std::string(kBlockSize, 'x'), size);
}

void Output::close() {
  ::close(STDOUT_FILENO);
  ::close(STDERR_FILENO);
}

}  // namespace scripted
