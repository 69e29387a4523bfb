#pragma once

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <string>

namespace voxtrel::bench {

using Nanoseconds = std::int64_t;

inline Nanoseconds nowNs() {
  return std::chrono::steady_clock::now().time_since_epoch().count();
}

/// Memory shared by the benchmark and the timed engine: what to do, and the times of what it did.
struct EngineTimes {
  static constexpr std::size_t kMaxLines = 4096;

  std::atomic<int> linesToWrite;
  std::atomic<Nanoseconds> mainEntered;
  std::atomic<Nanoseconds> exiting;
  std::array<std::atomic<Nanoseconds>, kMaxLines> written;

  /// Maps the file next to `engine`; null on failure.
  static EngineTimes* shareWith(const std::string& engine) {
    const int file = ::open((engine + ".times").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (file < 0 || ::ftruncate(file, sizeof(EngineTimes)) != 0) return nullptr;
    void* memory =
        ::mmap(nullptr, sizeof(EngineTimes), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    ::close(file);
    return memory == MAP_FAILED ? nullptr : static_cast<EngineTimes*>(memory);
  }
};

}  // namespace voxtrel::bench
