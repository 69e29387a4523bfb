#include "quillback/lock/KeyboardGrab.h"

#include "quillback/lock/GrabReason.h"

namespace voxtrel::quillback {

KeyboardGrab::KeyboardGrab() {
  connect();
}

void KeyboardGrab::connect() {
  server_ = XConnection::open();
  if (!server_) return;
  window_ = xcb_generate_id(server_->get());
  xcb_create_window(server_->get(), XCB_COPY_FROM_PARENT, window_, server_->root(), -1, -1, 1, 1, 0,
                    XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
  server_->flush();
}

bool KeyboardGrab::isLocked() {
  if (!server_ || server_->isBroken()) connect();  // the desktop may have come later
  if (!server_) return false;
  while (server_->nextEvent()) {  // of the keymap, which every client gets
  }
  return isGrabbed() && !isBoundKeyDown() && !isGrabHarmless(*server_);
}

/// The server refuses to grab for a window that is not shown; where another client has the keyboard, it
/// says that first. So asking changes nothing.
bool KeyboardGrab::isGrabbed() const {
  const auto reply = server_->reply<xcb_grab_keyboard_reply_t>(xcb_grab_keyboard(
      server_->get(), 0, window_, XCB_CURRENT_TIME, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
  return reply && reply->status == XCB_GRAB_STATUS_ALREADY_GRABBED;
}

bool KeyboardGrab::isBoundKeyDown() const {
  const auto keys = server_->reply<xcb_query_keymap_reply_t>(xcb_query_keymap(server_->get()));
  if (!keys) return false;
  constexpr unsigned kKeys = 256;
  for (unsigned key = 0; key < kKeys; ++key) {
    const bool isDown = (keys->keys[key / 8] >> (key % 8) & 1) != 0;
    if (isDown && isBound(static_cast<xcb_keycode_t>(key))) return true;
  }
  return false;
}

/// The server refuses a binding that another client has.
bool KeyboardGrab::isBound(xcb_keycode_t key) const {
  const auto cookie = xcb_grab_key_checked(server_->get(), 0, server_->root(), XCB_MOD_MASK_ANY,
                                           key, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
  // After a later reply the check below does not wait, whatever the server does.
  if (!server_->reply<xcb_get_input_focus_reply_t>(xcb_get_input_focus(server_->get())))
    return false;
  const XOwned<xcb_generic_error_t> refused(xcb_request_check(server_->get(), cookie));
  if (refused) return true;
  xcb_ungrab_key(server_->get(), key, server_->root(), XCB_MOD_MASK_ANY);
  server_->flush();
  return false;
}

}  // namespace voxtrel::quillback
