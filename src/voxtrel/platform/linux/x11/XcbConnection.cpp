#include "voxtrel/platform/linux/x11/XcbConnection.h"

#include <xcb/shape.h>

#include <QGuiApplication>
#include <cstdlib>
#include <memory>
#include <string_view>

namespace voxtrel {
namespace {

struct Free {
  void operator()(void* memory) const { std::free(memory); }
};
template <typename Reply>
std::unique_ptr<Reply, Free> owned(Reply* reply) {
  return std::unique_ptr<Reply, Free>(reply);
}

constexpr std::string_view kActiveWindow = "_NET_ACTIVE_WINDOW";
constexpr std::string_view kCompositorOfScreen0 = "_NET_WM_CM_S0";

xcb_intern_atom_cookie_t askForAtom(xcb_connection_t* connection, std::string_view name) {
  return xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data());
}

xcb_atom_t atomOf(xcb_connection_t* connection, xcb_intern_atom_cookie_t cookie) {
  const auto reply = owned(xcb_intern_atom_reply(connection, cookie, nullptr));
  return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
}

xcb_window_t windowIn(const xcb_get_property_reply_t* property) {
  if (property == nullptr || property->format != 32 || property->value_len < 1) return XCB_NONE;
  return *static_cast<const xcb_window_t*>(xcb_get_property_value(property));
}

}  // namespace

XcbConnection::XcbConnection() {
  const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  if (x11 == nullptr || x11->connection() == nullptr) return;
  connection_ = x11->connection();
  root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
  const auto activeWindow = askForAtom(connection_, kActiveWindow);
  const auto compositor = askForAtom(connection_, kCompositorOfScreen0);
  activeWindowAtom_ = atomOf(connection_, activeWindow);
  compositorAtom_ = atomOf(connection_, compositor);
}

std::optional<QRect> XcbConnection::activeWindow() const {
  if (connection_ == nullptr) return {};
  const auto question =
      xcb_get_property(connection_, 0, root_, activeWindowAtom_, XCB_ATOM_WINDOW, 0, 1);
  const auto property = owned(xcb_get_property_reply(connection_, question, nullptr));
  const xcb_window_t window = windowIn(property.get());
  if (window == XCB_NONE) return {};
  return placeOf(window);
}

xcb_get_selection_owner_cookie_t XcbConnection::askForCompositor() const {
  if (connection_ == nullptr) return {};
  return xcb_get_selection_owner(connection_, compositorAtom_);
}

bool XcbConnection::hasCompositor(xcb_get_selection_owner_cookie_t question) const {
  if (connection_ == nullptr) return true;
  const auto owner = owned(xcb_get_selection_owner_reply(connection_, question, nullptr));
  return owner && owner->owner != XCB_NONE;
}

std::optional<QRect> XcbConnection::placeOf(xcb_window_t window) const {
  const auto sizeCookie = xcb_get_geometry(connection_, window);
  const auto placeCookie = xcb_translate_coordinates(connection_, window, root_, 0, 0);
  const auto size = owned(xcb_get_geometry_reply(connection_, sizeCookie, nullptr));
  const auto place = owned(xcb_translate_coordinates_reply(connection_, placeCookie, nullptr));
  if (!size || !place) return {};  // it has just been closed
  return QRect(place->dst_x, place->dst_y, size->width, size->height);
}

void XcbConnection::setShape(xcb_window_t window, const std::vector<QRect>& rectangles) const {
  if (connection_ == nullptr) return;
  std::vector<xcb_rectangle_t> native;
  native.reserve(rectangles.size());
  for (const QRect& rect : rectangles) {
    native.push_back({static_cast<std::int16_t>(rect.x()), static_cast<std::int16_t>(rect.y()),
                      static_cast<std::uint16_t>(rect.width()),
                      static_cast<std::uint16_t>(rect.height())});
  }
  xcb_shape_rectangles(connection_, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING,
                       XCB_CLIP_ORDERING_YX_BANDED, window, 0, 0,
                       static_cast<std::uint32_t>(native.size()), native.data());
}

void XcbConnection::flush() const {
  if (connection_ != nullptr) xcb_flush(connection_);
}

}  // namespace voxtrel
