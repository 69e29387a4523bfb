#pragma once

#include <functional>
#include <utility>

namespace voxtrel {

/// Something that goes on until this handle is destroyed: a timer, an observer.
/// Thread: the one that made it.  Owns: the way to end it.
class Subscription {
 public:
  Subscription() = default;
  explicit Subscription(std::function<void()> end) : end_(std::move(end)) {}
  Subscription(Subscription&& other) noexcept : end_(std::exchange(other.end_, nullptr)) {}
  Subscription& operator=(Subscription&& other) noexcept {
    if (this != &other) {
      reset();
      end_ = std::exchange(other.end_, nullptr);
    }
    return *this;
  }
  Subscription(const Subscription&) = delete;
  Subscription& operator=(const Subscription&) = delete;
  ~Subscription() { reset(); }

  /// Ends it now; harmless when repeated.
  void reset() {
    if (auto end = std::exchange(end_, nullptr)) end();
  }
  explicit operator bool() const { return end_ != nullptr; }

 private:
  std::function<void()> end_;
};

}  // namespace voxtrel
