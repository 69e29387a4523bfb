#include "quillback/insertion/x11/ServerKeyTable.h"

#include <xkbcommon/xkbcommon-x11.h>

#include "common/x11/XcbXkb.h"

namespace voxtrel::quillback {
namespace {

struct Released {
  void operator()(xkb_context* context) const { xkb_context_unref(context); }
  void operator()(xkb_keymap* keymap) const { xkb_keymap_unref(keymap); }
};
template <typename T>
using Owned = std::unique_ptr<T, Released>;

}  // namespace

std::optional<KeyTable> serverKeyTable(const XConnection& server) {
  const auto state = server.reply<xcb_xkb_get_state_reply_t>(
      xcb_xkb_get_state(server.get(), XCB_XKB_ID_USE_CORE_KBD));
  if (!state) return std::nullopt;
  const Owned<xkb_context> context(xkb_context_new(XKB_CONTEXT_NO_DEFAULT_INCLUDES));
  if (!context) return std::nullopt;
  const Owned<xkb_keymap> keymap(xkb_x11_keymap_new_from_device(
      context.get(), server.get(), state->deviceID, XKB_KEYMAP_COMPILE_NO_FLAGS));
  if (!keymap) return std::nullopt;
  return readKeyTable(keymap.get(), state->group);
}

}  // namespace voxtrel::quillback
