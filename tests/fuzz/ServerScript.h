#pragma once

#include <sys/stat.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <string>

namespace voxtrel {

/// How many inputs led to a whole body so far. Input that never does would test nothing.
std::size_t wholeBodies();

/// Reads small numbers from a fuzzer's bytes; zero where there are no more.
/// Thread: one.
class FuzzChoices {
 public:
  explicit FuzzChoices(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

  bool areOver() const { return bytes_.empty(); }
  std::size_t below(std::size_t end) {
    if (bytes_.size() < 2) bytes_ = {};
    if (bytes_.empty()) return 0;
    const std::size_t number = bytes_[0] | std::size_t{bytes_[1]} << 8;
    bytes_ = bytes_.subspan(2);
    return number % end;
  }
  bool oneOf(std::size_t count) { return below(count) == 1; }

 private:
  std::span<const std::uint8_t> bytes_;
};

/// A new folder, in memory where the system has such a place.
inline std::string fuzzFolder() {
  struct stat found {};
  std::string name = ::stat("/dev/shm", &found) == 0 ? "/dev/shm/fuzz-XXXXXX" : "/tmp/fuzz-XXXXXX";
  return ::mkdtemp(name.data()) == nullptr ? std::string("/nowhere") : name;
}

}  // namespace voxtrel
