#include "platform/linux/XcbConnection.h"

#include <xcb/shape.h>

#include <QGuiApplication>
#include <cstdlib>
#include <memory>

namespace voxtrel {
namespace {

struct Free {
  void operator()(void* memory) const { std::free(memory); }
};
template <typename Reply>
std::unique_ptr<Reply, Free> owned(Reply* reply) {
  return std::unique_ptr<Reply, Free>(reply);
}

constexpr const char* kActiveWindow = "_NET_ACTIVE_WINDOW";
constexpr const char* kCompositorOfScreen0 = "_NET_WM_CM_S0";

}  // namespace

XcbConnection::XcbConnection() {
  const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  if (x11 == nullptr || x11->connection() == nullptr) return;
  connection_ = x11->connection();
  root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
}

xcb_atom_t XcbConnection::atom(std::string_view name) const {
  const auto cookie =
      xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.data());
  const auto reply = owned(xcb_intern_atom_reply(connection_, cookie, nullptr));
  return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
}

std::optional<xcb_window_t> XcbConnection::activeWindowId() const {
  const auto cookie =
      xcb_get_property(connection_, 0, root_, atom(kActiveWindow), XCB_ATOM_WINDOW, 0, 1);
  const auto reply = owned(xcb_get_property_reply(connection_, cookie, nullptr));
  if (!reply || reply->format != 32 || xcb_get_property_value_length(reply.get()) < 4) return {};
  const auto window = *static_cast<const xcb_window_t*>(xcb_get_property_value(reply.get()));
  if (window == XCB_NONE) return {};
  return window;
}

std::optional<QRect> XcbConnection::activeWindow() const {
  if (connection_ == nullptr) return {};
  const auto window = activeWindowId();
  if (!window) return {};
  const auto sizeCookie = xcb_get_geometry(connection_, *window);
  const auto placeCookie = xcb_translate_coordinates(connection_, *window, root_, 0, 0);
  const auto size = owned(xcb_get_geometry_reply(connection_, sizeCookie, nullptr));
  const auto place = owned(xcb_translate_coordinates_reply(connection_, placeCookie, nullptr));
  if (!size || !place) return {};  // it has just been closed
  return QRect(place->dst_x, place->dst_y, size->width, size->height);
}

bool XcbConnection::hasCompositor() const {
  if (connection_ == nullptr) return true;
  const auto cookie = xcb_get_selection_owner(connection_, atom(kCompositorOfScreen0));
  const auto reply = owned(xcb_get_selection_owner_reply(connection_, cookie, nullptr));
  return reply && reply->owner != XCB_NONE;
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

}  // namespace voxtrel
