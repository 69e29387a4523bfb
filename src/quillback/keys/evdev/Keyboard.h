#pragma once

#include <functional>
#include <memory>
#include <string>

#include <tl/expected.hpp>

namespace voxtrel::quillback {

/// A keyboard as the kernel shows it.
/// Thread: the loop's.
class Keyboard {
 public:
  using OnKey = std::function<void(int code, bool isDown)>;

  virtual ~Keyboard() = default;

  virtual int descriptor() const = 0;
  /// Reports presses and releases since the last call, oldest first, without waiting. False if the
  /// keyboard is gone or its file is at its end.
  [[nodiscard]] virtual bool read(const OnKey& onKey) = 0;
};

/// Why a file is not read as a keyboard.
enum class NoKeyboard { notOne, noPermission };
using OpenedKeyboard = tl::expected<std::unique_ptr<Keyboard>, NoKeyboard>;
/// Opens the file at `path`, which is a keyboard if it has the key `code`.
using OpenKeyboard = std::function<OpenedKeyboard(const std::string& path, int code)>;

/// Opens a kernel device with libevdev. It is never grabbed, so other programs read it too.
OpenedKeyboard openEvdevKeyboard(const std::string& path, int code);

}  // namespace voxtrel::quillback
