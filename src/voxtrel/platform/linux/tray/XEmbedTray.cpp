#include "voxtrel/platform/linux/tray/XEmbedTray.h"

#include <xcb/xcb.h>

#include <QGuiApplication>
#include <cstdlib>
#include <memory>
#include <string>
#include <utility>

namespace voxtrel {

namespace {

struct Free {
  void operator()(void* memory) const { std::free(memory); }
};

xcb_connection_t* xConnection() {
  const auto* const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  return x11 == nullptr ? nullptr : x11->connection();
}

xcb_atom_t atomOf(xcb_connection_t* connection, const std::string& name) {
  const std::unique_ptr<xcb_intern_atom_reply_t, Free> reply(xcb_intern_atom_reply(
      connection,
      xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.c_str()),
      nullptr));
  return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

int screenNumber() {
  char* host = nullptr;
  int display = 0;
  int screen = 0;
  xcb_parse_display(nullptr, &host, &display, &screen);
  std::free(host);
  return screen;
}

}  // namespace

bool hasXEmbedTray() {
  xcb_connection_t* const connection = xConnection();
  if (connection == nullptr) return false;
  const xcb_atom_t tray = atomOf(connection, "_NET_SYSTEM_TRAY_S" + std::to_string(screenNumber()));
  const std::unique_ptr<xcb_get_selection_owner_reply_t, Free> owner(xcb_get_selection_owner_reply(
      connection, xcb_get_selection_owner(connection, tray), nullptr));
  return owner && owner->owner != XCB_NONE;
}

XManagerWatch::XManagerWatch(std::function<void()> onAppeared)
    : onAppeared_(std::move(onAppeared)) {
  if (xcb_connection_t* const connection = xConnection(); connection != nullptr) {
    managerAtom_ = atomOf(connection, "MANAGER");
    qGuiApp->installNativeEventFilter(this);
  }
}

bool XManagerWatch::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*) {
  constexpr std::uint8_t kSentByProgram =
      0x80;  ///< set in the type of an event that a program sent
  if (eventType != "xcb_generic_event_t") return false;
  const auto* const event = static_cast<const xcb_client_message_event_t*>(message);
  if ((event->response_type & ~kSentByProgram) == XCB_CLIENT_MESSAGE &&
      event->type == managerAtom_) {
    onAppeared_();
  }
  return false;
}

}  // namespace voxtrel
