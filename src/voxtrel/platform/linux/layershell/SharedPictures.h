#pragma once

#include <QImage>
#include <QSize>
#include <array>
#include <cstdint>

#include "voxtrel/platform/linux/layershell/Compositor.h"

namespace voxtrel {

/// Memory that the compositor reads pictures of one size from. A picture that it is still reading is
/// not overwritten.
/// Thread: the main thread.  Owns: the memory, its buffers.
/// Fails by: `put` returns null.
class SharedPictures {
 public:
  SharedPictures(wl_shm* shm, QSize size);
  ~SharedPictures();
  SharedPictures(const SharedPictures&) = delete;
  SharedPictures& operator=(const SharedPictures&) = delete;

  QSize size() const { return size_; }
  /// Copies `picture`, of this size with 32-bit pixels and premultiplied alpha, and returns the buffer
  /// to show; null while the compositor reads all of them.
  wl_buffer* put(const QImage& picture);

 private:
  struct Slot {
    WaylandOwned<wl_buffer> buffer;
    bool isRead = false;  ///< by the compositor
  };

  std::size_t pictureBytes() const;
  void makeBuffers(wl_shm* shm, int descriptor);

  const QSize size_;
  void* memory_ = nullptr;
  std::array<Slot, 3> slots_;
};

}  // namespace voxtrel
