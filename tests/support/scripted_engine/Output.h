#pragma once

#include <chrono>
#include <cstddef>
#include <mutex>
#include <string_view>

namespace scripted {

/// The engine's two streams.
/// Thread: any; what one call writes stays together.
class Output {
 public:
  enum class Stream : int { standard = 1, error = 2 };

  /// From now on: `size` bytes a write, with `pause` between two; 0: everything at once.
  void split(std::size_t size, std::chrono::milliseconds pause);

  void write(std::string_view bytes, Stream stream = Stream::standard);

  /// `line` again and again, `size` bytes in all, the last of which ends a line. As fast as it
  /// goes.
  void flood(unsigned long long size, std::string_view line);

  /// `size` bytes without a newline.
  void longLine(unsigned long long size);

  static void close();

 private:
  std::mutex mutex_;
  std::size_t pieceSize_ = 0;
  std::chrono::milliseconds pause_{0};
};

}  // namespace scripted
