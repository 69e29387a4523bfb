#include "quillback/keys/x11/XInput2KeyWatch.h"

#include <xcb/xinput.h>

#include <utility>

#include "common/x11/XcbXkb.h"

namespace voxtrel::quillback {
namespace {

void select(const XConnection& server, xcb_input_device_id_t device, std::uint32_t events) {
  struct {
    xcb_input_event_mask_t head;
    std::uint32_t events;
  } mask{{device, 1}, events};
  xcb_input_xi_select_events(server.get(), server.root(), 1, &mask.head);
}

/// The error says which extension the server lacks.
tl::expected<void, std::string> checkExtensions(const XConnection& server) {
  const auto* input = xcb_get_extension_data(server.get(), &xcb_input_id);
  if (input == nullptr || input->present == 0)
    return tl::make_unexpected("the X server has no XInput extension");
  const auto version = server.reply<xcb_input_xi_query_version_reply_t>(
      xcb_input_xi_query_version(server.get(), 2, 2));
  if (!version || version->major_version < 2)
    return tl::make_unexpected("the X server has no XInput 2");
  const auto* xkb = xcb_get_extension_data(server.get(), &xcb_xkb_id);
  if (xkb == nullptr || xkb->present == 0)
    return tl::make_unexpected("the X server has no keyboard extension");
  if (!server.reply<xcb_xkb_use_extension_reply_t>(xcb_xkb_use_extension(server.get(), 1, 0))) {
    return tl::make_unexpected("the X server refused its keyboard extension");
  }
  return {};
}

}  // namespace

tl::expected<std::unique_ptr<XInput2KeyWatch>, std::string> XInput2KeyWatch::open(
    const Hotkey& hotkey, KeyWatch::Listener listener, OwnKeys& ownKeys, Loop& loop,
    std::function<void()> onLost) {
  auto server = XConnection::open();
  if (!server) return tl::make_unexpected("there is no X server");
  if (auto checked = checkExtensions(*server); !checked) return tl::unexpected(checked.error());
  std::unique_ptr<XInput2KeyWatch> watch(new XInput2KeyWatch(
      std::move(server), hotkey, std::move(listener), ownKeys, std::move(onLost)));
  watch->selectEvents();
  watch->watch_ =
      loop.watch(watch->server_->descriptor(), [self = watch.get()] { self->handleEvents(); });
  return watch;
}

XInput2KeyWatch::XInput2KeyWatch(std::unique_ptr<XConnection> server, const Hotkey& hotkey,
                                 KeyWatch::Listener listener, OwnKeys& ownKeys,
                                 std::function<void()> onLost)
    : server_(std::move(server)),
      hotkey_(hotkey),
      key_(keyPlaces(*server_, hotkey), std::move(listener)),
      ownKeys_(ownKeys),
      onLost_(std::move(onLost)),
      inputOpcode_(xcb_get_extension_data(server_->get(), &xcb_input_id)->major_opcode),
      keyboardEvent_(xcb_get_extension_data(server_->get(), &xcb_xkb_id)->first_event) {}

void XInput2KeyWatch::selectEvents() {
  // With the slaves selected too, every event would arrive twice.
  select(*server_, XCB_INPUT_DEVICE_ALL_MASTER,
         XCB_INPUT_XI_EVENT_MASK_RAW_KEY_PRESS | XCB_INPUT_XI_EVENT_MASK_RAW_KEY_RELEASE);
  select(*server_, XCB_INPUT_DEVICE_ALL, XCB_INPUT_XI_EVENT_MASK_HIERARCHY);
  constexpr std::uint16_t kNewKeyboard = XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY;
  xcb_xkb_select_events(server_->get(), XCB_XKB_ID_USE_CORE_KBD, kNewKeyboard, 0, kNewKeyboard, 0,
                        0, nullptr);
  server_->flush();
}

void XInput2KeyWatch::handleEvents() {
  while (const auto event = server_->nextEvent()) handle(*event);
  if (server_->isBroken()) lose();
}

void XInput2KeyWatch::handle(const xcb_generic_event_t& event) {
  if (eventType(event) == XCB_GE_GENERIC) {
    const auto& generic = eventAs<xcb_ge_generic_event_t>(event);
    if (generic.extension != inputOpcode_) return;
    if (generic.event_type == XCB_INPUT_RAW_KEY_PRESS) handleKey(event, true);
    if (generic.event_type == XCB_INPUT_RAW_KEY_RELEASE) handleKey(event, false);
    if (generic.event_type == XCB_INPUT_HIERARCHY) handleHierarchy(event);
  } else if (eventType(event) == keyboardEvent_ && event.pad0 == XCB_XKB_NEW_KEYBOARD_NOTIFY) {
    key_.setCodes(keyPlaces(*server_, hotkey_));
  }
}

void XInput2KeyWatch::handleKey(const xcb_generic_event_t& event, bool isDown) {
  const auto& raw = eventAs<xcb_input_raw_key_press_event_t>(event);
  const int code = static_cast<int>(raw.detail);
  if (ownKeys_.claim(code, isDown)) return;
  isDown ? key_.down(raw.sourceid, code) : key_.up(raw.sourceid, code);
}

void XInput2KeyWatch::handleHierarchy(const xcb_generic_event_t& event) {
  constexpr std::uint32_t kGone = XCB_INPUT_HIERARCHY_MASK_SLAVE_REMOVED |
                                  XCB_INPUT_HIERARCHY_MASK_DEVICE_DISABLED |
                                  XCB_INPUT_HIERARCHY_MASK_SLAVE_DETACHED;
  const auto& change = eventAs<xcb_input_hierarchy_event_t>(event);
  for (auto info = xcb_input_hierarchy_infos_iterator(&change); info.rem > 0;
       xcb_input_hierarchy_info_next(&info)) {
    if ((info.data->flags & kGone) != 0) key_.gone(info.data->deviceid);
  }
}

void XInput2KeyWatch::lose() {
  watch_.reset();
  key_.allGone();
  const auto onLost = std::exchange(onLost_, nullptr);
  if (onLost) onLost();
}

}  // namespace voxtrel::quillback
