#include "support/scripted_engine/EngineLog.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <ctime>

namespace scripted {

void EngineLog::write(std::string_view text) const {
  append(text, O_CREAT);
}

void EngineLog::note(std::string_view text) const {
  append(text, 0);
}

void EngineLog::append(std::string_view text, int flags) const {
  const int file = ::open(path_.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC | flags, 0644);
  if (file < 0) return;
  timespec now{};
  ::clock_gettime(CLOCK_MONOTONIC, &now);
  std::array<char, 64> prefix{};
  const int length =
      std::snprintf(prefix.data(), prefix.size(), "%lld.%06ld %d ",
                    static_cast<long long>(now.tv_sec), now.tv_nsec / 1000, ::getpid());
  std::string line(prefix.data(), static_cast<std::size_t>(length));
  line.append(text).append(1, '\n');
  [[maybe_unused]] const ssize_t written = ::write(file, line.data(), line.size());
  ::close(file);
}

}  // namespace scripted
