#pragma once

#include <functional>
#include <memory>
#include <string>

namespace voxtrel::quillback {

/// A keyboard as the kernel shows it.
/// Thread: the loop's.
class Keyboard {
 public:
  using OnKey = std::function<void(int code, bool isDown)>;

  virtual ~Keyboard() = default;

  virtual int descriptor() const = 0;
  /// Hands over what was pressed and let go since the last time, in that order, without waiting.
  /// False where the keyboard is gone.
  [[nodiscard]] virtual bool read(const OnKey& onKey) = 0;
};

/// What became of a file that may be a keyboard.
struct KeyboardFile {
  std::unique_ptr<Keyboard> keyboard;  ///< nothing where it is none
  bool isRefused = false;              ///< we may not read the file
};

/// Opens a file; a keyboard is what has the key `code`.
using OpenKeyboard = std::function<KeyboardFile(const std::string& path, int code)>;

}  // namespace voxtrel::quillback
