#include "voxtrel/platform/linux/tray/XEmbedTray.h"

#include <QGuiApplication>
#include <cstdlib>
#include <string>
#include <utility>

#include "voxtrel/platform/linux/x11/XServer.h"

namespace voxtrel {

namespace {

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
  const auto server = qtXConnection();
  if (!server) return false;
  const xcb_atom_t tray = server->atom("_NET_SYSTEM_TRAY_S" + std::to_string(screenNumber()));
  const auto owner =
      server->reply<xcb_get_selection_owner_reply_t>(xcb_get_selection_owner(server->get(), tray));
  return owner && owner->owner != XCB_NONE;
}

XManagerWatch::XManagerWatch(std::function<void()> onAppeared)
    : onAppeared_(std::move(onAppeared)) {
  if (const auto server = qtXConnection()) {
    managerAtom_ = server->atom("MANAGER");
    qGuiApp->installNativeEventFilter(this);
  }
}

bool XManagerWatch::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*) {
  if (eventType != "xcb_generic_event_t") return false;
  const auto* const event = static_cast<const xcb_client_message_event_t*>(message);
  if (voxtrel::eventType(*static_cast<const xcb_generic_event_t*>(message)) == XCB_CLIENT_MESSAGE &&
      event->type == managerAtom_) {
    onAppeared_();
  }
  return false;
}

}  // namespace voxtrel
