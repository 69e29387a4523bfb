#include "voxtrel/platform/linux/layershell/SharedPictures.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

#include "common/posix/FileDescriptor.h"

namespace voxtrel {
namespace {

constexpr int kPixelBytes = 4;

}  // namespace

SharedPictures::SharedPictures(wl_shm* shm, QSize size) : size_(size) {
  const FileDescriptor file(::memfd_create("voxtrel-overlay", MFD_CLOEXEC));
  const std::size_t bytes = pictureBytes() * slots_.size();
  if (!file.isOpen() || ::ftruncate(file.get(), static_cast<off_t>(bytes)) != 0) return;
  void* const memory = ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED, file.get(), 0);
  if (memory == MAP_FAILED) return;
  memory_ = memory;
  makeBuffers(shm, file.get());
}

SharedPictures::~SharedPictures() {
  for (Slot& slot : slots_) slot.buffer.reset();
  if (memory_ != nullptr) ::munmap(memory_, pictureBytes() * slots_.size());
}

std::size_t SharedPictures::pictureBytes() const {
  return std::size_t{kPixelBytes} * static_cast<std::size_t>(size_.width()) *
         static_cast<std::size_t>(size_.height());
}

void SharedPictures::makeBuffers(wl_shm* shm, int descriptor) {
  static constexpr wl_buffer_listener kListener = {
      .release = [](void* isRead, wl_buffer*) { *static_cast<bool*>(isRead) = false; }};
  const auto bytes = static_cast<std::int32_t>(pictureBytes());
  const auto count = static_cast<std::int32_t>(slots_.size());
  wl_shm_pool* const pool = wl_shm_create_pool(shm, descriptor, bytes * count);
  std::int32_t offset = 0;
  for (Slot& slot : slots_) {
    slot.buffer.reset(wl_shm_pool_create_buffer(pool, offset, size_.width(), size_.height(),
                                                size_.width() * kPixelBytes,
                                                WL_SHM_FORMAT_ARGB8888));
    wl_buffer_add_listener(slot.buffer.get(), &kListener, &slot.isRead);
    offset += bytes;
  }
  wl_shm_pool_destroy(pool);  // the buffers keep it
}

wl_buffer* SharedPictures::put(const QImage& picture) {
  const auto free =
      std::find_if(slots_.begin(), slots_.end(), [](const Slot& slot) { return !slot.isRead; });
  if (memory_ == nullptr || free == slots_.end()) return nullptr;
  const auto index = static_cast<std::size_t>(free - slots_.begin());
  std::memcpy(static_cast<std::byte*>(memory_) + index * pictureBytes(), picture.constBits(),
              pictureBytes());
  free->isRead = true;
  return free->buffer.get();
}

}  // namespace voxtrel
