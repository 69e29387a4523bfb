#include "voxtrel/platform/linux/overlay/XcbSurface.h"

#include <QSysInfo>
#include <QWindow>

#include "voxtrel/platform/linux/x11/XServer.h"

namespace voxtrel {
namespace {

bool hasOurPixelFormat(const xcb_setup_t* setup, std::uint8_t depth) {
  const bool little = QSysInfo::ByteOrder == QSysInfo::LittleEndian;
  const auto order = little ? XCB_IMAGE_ORDER_LSB_FIRST : XCB_IMAGE_ORDER_MSB_FIRST;
  if (setup->image_byte_order != order) return false;
  for (auto format = xcb_setup_pixmap_formats_iterator(setup); format.rem > 0;
       xcb_format_next(&format)) {
    if (format.data->depth == depth) return format.data->bits_per_pixel == 32;
  }
  return false;
}

}  // namespace

std::unique_ptr<XcbSurface> XcbSurface::make(const XServer& server, const QWindow& window) {
  // Qt reports the format that the server granted, with alpha or without.
  const std::uint8_t depth = window.format().alphaBufferSize() > 0 ? 32 : 24;
  if (!server || !hasOurPixelFormat(xcb_get_setup(server.native()), depth)) return nullptr;
  return std::unique_ptr<XcbSurface>(
      new XcbSurface(server.native(), static_cast<xcb_window_t>(window.winId()), depth));
}

XcbSurface::XcbSurface(xcb_connection_t* connection, xcb_window_t window, std::uint8_t depth)
    : connection_(connection),
      window_(window),
      depth_(depth),
      context_(xcb_generate_id(connection)) {
  xcb_create_gc(connection_, context_, window_, 0, nullptr);
}

XcbSurface::~XcbSurface() {
  xcb_free_gc(connection_, context_);
}

void XcbSurface::put(const QImage& picture, const QRect& part) const {
  const auto rows = static_cast<std::uint32_t>(part.height());
  xcb_put_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, window_, context_,
                static_cast<std::uint16_t>(picture.width()), static_cast<std::uint16_t>(rows), 0,
                static_cast<std::int16_t>(part.y()), 0, depth_,
                rows * static_cast<std::uint32_t>(picture.bytesPerLine()),
                picture.constScanLine(part.y()));
  xcb_flush(connection_);
}

}  // namespace voxtrel
