#pragma once

#include <unistd.h>

#include <string>
#include <string_view>

#include "quillback/ports/Output.h"

namespace voxtrel::quillback {

/// Lines on the standard output, each in one write.
/// Thread: any.
class StdoutOutput : public Output {
 public:
  void print(std::string_view line) override {
    const std::string text = std::string(line) + '\n';
    // Where nobody reads any more, there is nobody to tell.
    [[maybe_unused]] const ssize_t written = ::write(STDOUT_FILENO, text.data(), text.size());
  }
};

}  // namespace voxtrel::quillback
