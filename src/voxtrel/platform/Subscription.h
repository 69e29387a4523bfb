#pragma once

#include <functional>
#include <utility>

namespace voxtrel {

/// Keeps a timer or an observer running until this handle is destroyed.
/// Thread: the one that made it.  Owns: the function that ends it.
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

  /// Ends it now. May be repeated.
  void reset() {
    if (auto end = std::exchange(end_, nullptr)) end();
  }
  explicit operator bool() const { return end_ != nullptr; }

 private:
  std::function<void()> end_;
};

}  // namespace voxtrel
