#include "voxtrel/platform/posix/Waiting.h"

#include <thread>

namespace voxtrel {

bool eventually(const std::function<bool()>& holds, std::chrono::milliseconds limit) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  while (!holds()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

}  // namespace voxtrel
