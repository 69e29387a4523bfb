#pragma once

#include <unistd.h>

#include <array>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "quillback/loop/EpollLoop.h"

namespace voxtrel::quillback {

/// Hands over each text that standard input brings, up to its zero byte, and stops the loop at the end.
/// Thread: the loop's.  Borrows: the loop (must outlive this).
class TextsOnInput {
 public:
  using OnText = std::function<void(const std::string& text)>;

  TextsOnInput(EpollLoop& loop, OnText onText)
      : loop_(loop),
        onText_(std::move(onText)),
        watch_(loop.watch(STDIN_FILENO, [this] { read(); })) {}

 private:
  void read() {
    std::array<char, 65536> bytes{};
    const ssize_t size = ::read(STDIN_FILENO, bytes.data(), bytes.size());
    if (size <= 0) return loop_.stop();
    input_.append(bytes.data(), static_cast<std::size_t>(size));
    for (std::size_t end = 0; (end = input_.find('\0')) != std::string::npos;) {
      onText_(input_.substr(0, end));
      input_.erase(0, end + 1);
    }
  }

  EpollLoop& loop_;
  OnText onText_;
  std::string input_;
  std::unique_ptr<Loop::Watch> watch_;
};

}  // namespace voxtrel::quillback
