#include "quillback/insertion/wayland/SeatKeymap.h"

#include <sys/mman.h>

#include "common/posix/FileDescriptor.h"

namespace voxtrel::quillback {
namespace {

/// xkbcommon's numbers are X11's.
constexpr xkb_keycode_t kFirstKey = 8;

bool writes(xkb_keymap* keymap, xkb_layout_index_t layout, xkb_keycode_t key, xkb_keysym_t symbol) {
  const xkb_keysym_t* symbols = nullptr;
  return xkb_keymap_key_get_syms_by_level(keymap, key, layout, 0, &symbols) == 1 &&
         *symbols == symbol;
}

xkb_keymap* readKeymap(const FileDescriptor& file, std::uint32_t size) {
  void* const text = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, file.get(), 0);
  if (text == MAP_FAILED) return nullptr;
  const Handle<xkb_context, xkb_context_unref> context(
      xkb_context_new(XKB_CONTEXT_NO_DEFAULT_INCLUDES));
  // The size counts the zero byte at the end.
  xkb_keymap* const keymap =
      xkb_keymap_new_from_buffer(context.get(), static_cast<const char*>(text), size - 1,
                                 XKB_KEYMAP_FORMAT_TEXT_V1, XKB_KEYMAP_COMPILE_NO_FLAGS);
  ::munmap(text, size);
  return keymap;
}

}  // namespace

/// What the compositor calls. Keys come only to programs with a window.
struct SeatKeymap::Callbacks {
  static void changed(void* data, wl_seat* seat, std::uint32_t capabilities) {
    auto* const self = static_cast<SeatKeymap*>(data);
    if ((capabilities & WL_SEAT_CAPABILITY_KEYBOARD) == 0 || self->keyboard_ != nullptr) return;
    static constexpr wl_keyboard_listener kListener{mapped,  entered,  left,
                                                    pressed, modified, repeated};
    self->keyboard_ = wl_seat_get_keyboard(seat);
    wl_keyboard_add_listener(self->keyboard_, &kListener, self);
  }
  static void named(void* /*data*/, wl_seat* /*seat*/, const char* /*name*/) {}

  static void mapped(void* data, wl_keyboard* /*keyboard*/, std::uint32_t format, int descriptor,
                     std::uint32_t size) {
    const FileDescriptor file(descriptor);
    if (format != WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1 || size == 0) return;
    static_cast<SeatKeymap*>(data)->keymap_.reset(readKeymap(file, size));
  }
  static void entered(void* /*data*/, wl_keyboard* /*keyboard*/, std::uint32_t /*serial*/,
                      wl_surface* /*surface*/, wl_array* /*keys*/) {}
  static void left(void* /*data*/, wl_keyboard* /*keyboard*/, std::uint32_t /*serial*/,
                   wl_surface* /*surface*/) {}
  static void pressed(void* /*data*/, wl_keyboard* /*keyboard*/, std::uint32_t /*serial*/,
                      std::uint32_t /*time*/, std::uint32_t /*key*/, std::uint32_t /*state*/) {}
  static void modified(void* /*data*/, wl_keyboard* /*keyboard*/, std::uint32_t /*serial*/,
                       std::uint32_t /*down*/, std::uint32_t /*latched*/, std::uint32_t /*locked*/,
                       std::uint32_t /*layout*/) {}
  static void repeated(void* /*data*/, wl_keyboard* /*keyboard*/, std::int32_t /*rate*/,
                       std::int32_t /*delay*/) {}
};

SeatKeymap::SeatKeymap(const Compositor& compositor) {
  static constexpr wl_seat_listener kListener{Callbacks::changed, Callbacks::named};
  wl_seat_add_listener(compositor.seat(), &kListener, this);
}

SeatKeymap::~SeatKeymap() {
  if (keyboard_ != nullptr) wl_keyboard_destroy(keyboard_);
}

int SeatKeymap::keyOf(std::uint32_t symbol, int usual) const {
  if (!keymap_) return usual;
  xkb_keymap* const keymap = keymap_.get();
  const xkb_layout_index_t layouts = xkb_keymap_num_layouts(keymap);
  for (xkb_layout_index_t layout = 0; layout < layouts; ++layout) {
    if (writes(keymap, layout, static_cast<xkb_keycode_t>(usual) + kFirstKey, symbol)) return usual;
    for (xkb_keycode_t key = xkb_keymap_min_keycode(keymap); key <= xkb_keymap_max_keycode(keymap);
         ++key) {
      if (writes(keymap, layout, key, symbol)) return static_cast<int>(key - kFirstKey);
    }
  }
  return usual;
}

}  // namespace voxtrel::quillback
