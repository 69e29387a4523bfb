#pragma once

#include "common/posix/FileDescriptor.h"
#include "quillback/keys/evdev/Keyboard.h"

struct libevdev;

namespace voxtrel::quillback {

/// A keyboard read beside everybody else: it is never grabbed. Keys that changed while the kernel's
/// queue was full are handed over as well.
/// Thread: the loop's.  Owns: the device's descriptor.
class LibevdevKeyboard final : public Keyboard {
 public:
  [[nodiscard]] static KeyboardFile open(const std::string& path, int code);
  ~LibevdevKeyboard() override;
  LibevdevKeyboard(const LibevdevKeyboard&) = delete;
  LibevdevKeyboard& operator=(const LibevdevKeyboard&) = delete;

  int descriptor() const override { return descriptor_.get(); }
  [[nodiscard]] bool read(const OnKey& onKey) override;

 private:
  LibevdevKeyboard(FileDescriptor descriptor, libevdev* device);

  FileDescriptor descriptor_;
  libevdev* device_;
};

}  // namespace voxtrel::quillback
