#include "quillback/insertion/clipboard/X11SelectionReader.h"

#include <cstdint>
#include <limits>
#include <utility>

namespace voxtrel::quillback {
namespace {

constexpr const char* kProperty = "_QUILLBACK_CLIPBOARD";
constexpr const char* kInParts = "INCR";
constexpr std::size_t kMaxBytes = std::size_t{64} << 20U;

struct Part {
  xcb_atom_t type = XCB_ATOM_NONE;
  std::string bytes;
};

/// Takes the property's value away, which also asks for the next part.
Part takeProperty(const XConnection& server, xcb_window_t window, xcb_atom_t property) {
  constexpr std::uint32_t kAll = std::numeric_limits<std::uint32_t>::max() / 4;
  const auto reply = server.reply<xcb_get_property_reply_t>(
      xcb_get_property(server.get(), 1, window, property, XCB_GET_PROPERTY_TYPE_ANY, 0, kAll));
  if (!reply) return {};
  const auto size = static_cast<std::size_t>(xcb_get_property_value_length(reply.get()));
  return {reply->type,
          std::string(static_cast<const char*>(xcb_get_property_value(reply.get())), size)};
}

}  // namespace

xcb_window_t makeHiddenWindow(const XConnection& server) {
  const xcb_window_t window = xcb_generate_id(server.get());
  const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
  xcb_create_window(server.get(), XCB_COPY_FROM_PARENT, window, server.root(), -1, -1, 1, 1, 0,
                    XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
  return window;
}

X11SelectionReader::X11SelectionReader(const XConnection& server, X11Atoms& atoms,
                                       xcb_atom_t selection)
    : server_(server),
      selection_(selection),
      property_(atoms.of(kProperty)),
      incremental_(atoms.of(kInParts)),
      window_(makeHiddenWindow(server)) {}

X11SelectionReader::~X11SelectionReader() {
  xcb_destroy_window(server_.get(), window_);
  server_.flush();
}

void X11SelectionReader::read(xcb_atom_t type, OnBytes onBytes) {
  type_ = type;
  comesInParts_ = false;
  bytes_.clear();
  onBytes_ = std::move(onBytes);
  xcb_convert_selection(server_.get(), window_, selection_, type, property_, XCB_CURRENT_TIME);
  server_.flush();
}

void X11SelectionReader::handle(const xcb_generic_event_t& event) {
  if (!onBytes_) return;
  if (eventType(event) == XCB_SELECTION_NOTIFY) {
    const auto& notify = eventAs<xcb_selection_notify_event_t>(event);
    if (notify.requestor == window_ && notify.target == type_) onNotify(notify);
  } else if (eventType(event) == XCB_PROPERTY_NOTIFY) {
    const auto& change = eventAs<xcb_property_notify_event_t>(event);
    const bool isPart = comesInParts_ && change.window == window_ && change.atom == property_ &&
                        change.state == XCB_PROPERTY_NEW_VALUE;
    if (isPart) onPart();
  }
}

void X11SelectionReader::onNotify(const xcb_selection_notify_event_t& event) {
  if (event.property == XCB_NONE) return end({});
  Part whole = takeProperty(server_, window_, property_);
  comesInParts_ = whole.type == incremental_;
  if (!comesInParts_) end(std::move(whole.bytes));
}

/// An empty part is the end.
void X11SelectionReader::onPart() {
  const Part part = takeProperty(server_, window_, property_);
  bytes_ += part.bytes;
  if (bytes_.size() > kMaxBytes) return end({});
  if (part.bytes.empty()) end(std::exchange(bytes_, {}));
}

void X11SelectionReader::end(std::string bytes) {
  comesInParts_ = false;
  const OnBytes onBytes = std::exchange(onBytes_, nullptr);
  onBytes(std::move(bytes));
}

}  // namespace voxtrel::quillback
