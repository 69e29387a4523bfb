#include "quillback/keys/evdev/LibevdevKeyboard.h"

#include <fcntl.h>
#include <libevdev/libevdev.h>

#include <cerrno>
#include <utility>

namespace voxtrel::quillback {
namespace {

enum KeyValue : int { letGo = 0, pressed = 1 };  // 2 is a repeat

}  // namespace

KeyboardFile LibevdevKeyboard::open(const std::string& path, int code) {
  FileDescriptor descriptor(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
  if (!descriptor.isOpen()) return {nullptr, errno == EACCES || errno == EPERM};
  libevdev* device = nullptr;
  if (libevdev_new_from_fd(descriptor.get(), &device) < 0) return {};
  const auto key = static_cast<unsigned>(code);
  // The constructor is private.
  std::unique_ptr<LibevdevKeyboard> keyboard(new LibevdevKeyboard(std::move(descriptor), device));
  if (libevdev_has_event_code(device, EV_KEY, key) == 0) return {};
  return {std::move(keyboard), false};
}

LibevdevKeyboard::LibevdevKeyboard(FileDescriptor descriptor, libevdev* device)
    : descriptor_(std::move(descriptor)), device_(device) {}

LibevdevKeyboard::~LibevdevKeyboard() {
  libevdev_free(device_);
}

bool LibevdevKeyboard::read(const OnKey& onKey) {
  unsigned flags = LIBEVDEV_READ_FLAG_NORMAL;
  for (;;) {
    input_event event{};
    const int status = libevdev_next_event(device_, flags, &event);
    if (status == -EAGAIN) {
      if (flags == LIBEVDEV_READ_FLAG_NORMAL) return true;
      flags = LIBEVDEV_READ_FLAG_NORMAL;  // all that was lost has been told
      continue;
    }
    if (status < 0) return status == -EINTR;
    if (status == LIBEVDEV_READ_STATUS_SYNC) flags = LIBEVDEV_READ_FLAG_SYNC;
    if (event.type != EV_KEY) continue;
    if (event.value == pressed) onKey(event.code, true);
    if (event.value == letGo) onKey(event.code, false);
  }
}

}  // namespace voxtrel::quillback
