#include "voxtrel/platform/linux/x11/XServer.h"

#include <xcb/shape.h>
#include <xcb/xinput.h>

#include <QGuiApplication>

namespace voxtrel {
namespace {

xcb_window_t windowIn(const xcb_get_property_reply_t* property) {
  if (property == nullptr || property->format != 32 || property->value_len < 1) return XCB_NONE;
  return *static_cast<const xcb_window_t*>(xcb_get_property_value(property));
}

}  // namespace

std::unique_ptr<XConnection> qtXConnection() {
  const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  if (x11 == nullptr || x11->connection() == nullptr) return nullptr;
  return XConnection::borrow(x11->connection());
}

void setStartupId(xcb_window_t window, const QByteArray& startupId) {
  constexpr std::uint8_t kBitsOfAByte = 8;
  const auto server = qtXConnection();
  if (!server) return;
  xcb_change_property(server->get(), XCB_PROP_MODE_REPLACE, window, server->atom("_NET_STARTUP_ID"),
                      server->atom("UTF8_STRING"), kBitsOfAByte,
                      static_cast<std::uint32_t>(startupId.size()), startupId.constData());
}

bool offersXInput2(const char* display) {
  constexpr std::uint16_t kMajorVersion = 2;
  const auto server = XConnection::open(display);
  if (!server) return false;
  // A request of a missing extension would break the connection.
  const auto* const extension = xcb_get_extension_data(server->get(), &xcb_input_id);
  if (extension == nullptr || extension->present == 0) return false;
  // No timeout: a slow server must not look like one without XInput 2.
  const XOwned<xcb_input_xi_query_version_reply_t> version(xcb_input_xi_query_version_reply(
      server->get(), xcb_input_xi_query_version(server->get(), kMajorVersion, 0), nullptr));
  return version && version->major_version >= kMajorVersion;
}

XServer::XServer() : connection_(qtXConnection()) {
  if (!connection_) return;
  activeWindowAtom_ = connection_->atom("_NET_ACTIVE_WINDOW");
  compositorAtom_ = connection_->atom("_NET_WM_CM_S0");
}

std::optional<QRect> XServer::activeWindow() const {
  if (!connection_) return {};
  const auto property = connection_->reply<xcb_get_property_reply_t>(
      xcb_get_property(native(), 0, connection_->root(), activeWindowAtom_, XCB_ATOM_WINDOW, 0, 1));
  const xcb_window_t window = windowIn(property.get());
  if (window == XCB_NONE) return {};
  return frameOf(window);
}

xcb_get_selection_owner_cookie_t XServer::askForCompositor() const {
  if (!connection_) return {};
  return xcb_get_selection_owner(native(), compositorAtom_);
}

bool XServer::hasCompositor(xcb_get_selection_owner_cookie_t cookie) const {
  if (!connection_) return true;
  const auto owner = connection_->reply<xcb_get_selection_owner_reply_t>(cookie);
  return owner && owner->owner != XCB_NONE;
}

std::optional<QRect> XServer::frameOf(xcb_window_t window) const {
  const auto sizeCookie = xcb_get_geometry(native(), window);
  const auto positionCookie =
      xcb_translate_coordinates(native(), window, connection_->root(), 0, 0);
  const auto size = connection_->reply<xcb_get_geometry_reply_t>(sizeCookie);
  const auto position = connection_->reply<xcb_translate_coordinates_reply_t>(positionCookie);
  if (!size || !position) return {};  // the window has just been closed
  return QRect(position->dst_x, position->dst_y, size->width, size->height);
}

void XServer::setShape(xcb_window_t window, const std::vector<QRect>& rectangles) const {
  if (!connection_) return;
  std::vector<xcb_rectangle_t> parts;
  parts.reserve(rectangles.size());
  for (const QRect& rect : rectangles) {
    parts.push_back({static_cast<std::int16_t>(rect.x()), static_cast<std::int16_t>(rect.y()),
                     static_cast<std::uint16_t>(rect.width()),
                     static_cast<std::uint16_t>(rect.height())});
  }
  xcb_shape_rectangles(native(), XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING,
                       XCB_CLIP_ORDERING_YX_BANDED, window, 0, 0,
                       static_cast<std::uint32_t>(parts.size()), parts.data());
}

void XServer::flush() const {
  if (connection_) connection_->flush();
}

}  // namespace voxtrel
