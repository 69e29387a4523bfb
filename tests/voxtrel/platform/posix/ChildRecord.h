#pragma once

#include <condition_variable>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace voxtrel {

/// What a child reported.
/// Thread: any.
class ChildRecord {
 public:
  void addOutput(std::string_view bytes);
  void setStatus(int status);

  std::string output() const;
  bool contains(std::string_view text) const;
  std::optional<int> status() const;

  /// Waits up to 30 s for the status; none if it does not come.
  std::optional<int> waitForStatus();

  /// Whether something was reported after the exit.
  bool isLate() const;

 private:
  mutable std::mutex mutex_;
  std::condition_variable exited_;
  std::string output_;
  std::optional<int> status_;
  bool isLate_ = false;
};

}  // namespace voxtrel
