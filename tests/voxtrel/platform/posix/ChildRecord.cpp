#include "voxtrel/platform/posix/ChildRecord.h"

#include <chrono>

namespace voxtrel {

void ChildRecord::addOutput(std::string_view bytes) {
  const std::lock_guard lock(mutex_);
  isLate_ = isLate_ || status_.has_value() || bytes.empty();
  output_ += bytes;
}

void ChildRecord::setStatus(int status) {
  const std::lock_guard lock(mutex_);
  isLate_ = isLate_ || status_.has_value();
  status_ = status;
  exited_.notify_all();
}

std::string ChildRecord::output() const {
  const std::lock_guard lock(mutex_);
  return output_;
}

bool ChildRecord::contains(std::string_view text) const {
  return output().find(text) != std::string::npos;
}

std::optional<int> ChildRecord::status() const {
  const std::lock_guard lock(mutex_);
  return status_;
}

std::optional<int> ChildRecord::waitForStatus() {
  std::unique_lock lock(mutex_);
  exited_.wait_for(lock, std::chrono::seconds(30), [this] { return status_.has_value(); });
  return status_;
}

bool ChildRecord::isLate() const {
  const std::lock_guard lock(mutex_);
  return isLate_;
}

}  // namespace voxtrel
