#include "quillback/keys/evdev/Keyboard.h"

#include <fcntl.h>
#include <libevdev/libevdev.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "common/base/Handle.h"
#include "common/posix/FileDescriptor.h"

namespace voxtrel::quillback {
namespace {

using Device = Handle<libevdev, libevdev_free>;

constexpr int kReleased = 0;
constexpr int kPressed = 1;  // 2 is a repeat

/// A keyboard read with libevdev, which also reports changes from while the kernel's queue was full.
/// Thread: the loop's.  Owns: the device and its descriptor.
class LibevdevKeyboard final : public Keyboard {
 public:
  LibevdevKeyboard(FileDescriptor descriptor, Device device)
      : descriptor_(std::move(descriptor)), device_(std::move(device)) {}

  int descriptor() const override { return descriptor_.get(); }
  bool read(const OnKey& onKey) override;

 private:
  bool isAtEnd() const;

  FileDescriptor descriptor_;
  Device device_;
};

/// For libevdev the end of the file is the same as no new event. A device refuses to give less than a
/// whole event, so this takes nothing from it.
bool LibevdevKeyboard::isAtEnd() const {
  char byte = 0;
  return ::read(descriptor_.get(), &byte, 1) == 0;
}

bool LibevdevKeyboard::read(const OnKey& onKey) {
  unsigned flags = LIBEVDEV_READ_FLAG_NORMAL;
  for (;;) {
    input_event event{};
    const int status = libevdev_next_event(device_.get(), flags, &event);
    if (status == -EAGAIN) {
      if (flags == LIBEVDEV_READ_FLAG_NORMAL) return !isAtEnd();
      flags = LIBEVDEV_READ_FLAG_NORMAL;  // all lost changes have been reported
      continue;
    }
    if (status < 0) return status == -EINTR;
    if (status == LIBEVDEV_READ_STATUS_SYNC) flags = LIBEVDEV_READ_FLAG_SYNC;
    if (event.type != EV_KEY) continue;
    if (event.value == kPressed) onKey(event.code, true);
    if (event.value == kReleased) onKey(event.code, false);
  }
}

}  // namespace

OpenedKeyboard openEvdevKeyboard(const std::string& path, int code) {
  FileDescriptor descriptor(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
  if (!descriptor.isOpen()) {
    const bool isRefused = errno == EACCES || errno == EPERM;
    return tl::unexpected(isRefused ? NoKeyboard::noPermission : NoKeyboard::notOne);
  }
  libevdev* raw = nullptr;
  if (libevdev_new_from_fd(descriptor.get(), &raw) < 0) return tl::unexpected(NoKeyboard::notOne);
  Device device(raw);
  const bool hasKey = libevdev_has_event_code(raw, EV_KEY, static_cast<unsigned>(code)) != 0;
  if (!hasKey) return tl::unexpected(NoKeyboard::notOne);
  return std::make_unique<LibevdevKeyboard>(std::move(descriptor), std::move(device));
}

}  // namespace voxtrel::quillback
