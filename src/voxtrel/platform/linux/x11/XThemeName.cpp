#include "voxtrel/platform/linux/x11/XThemeName.h"

#include <QCoreApplication>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <utility>

#include "voxtrel/platform/linux/x11/XSettings.h"

namespace voxtrel {

namespace {

struct Free {
  void operator()(void* memory) const { std::free(memory); }
};
template <typename Reply>
std::unique_ptr<Reply, Free> owned(Reply* reply) {
  return std::unique_ptr<Reply, Free>(reply);
}

xcb_atom_t atom(xcb_connection_t* connection, std::string_view name) {
  const auto cookie =
      xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data());
  const auto reply = owned(xcb_intern_atom_reply(connection, cookie, nullptr));
  return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
}

}  // namespace

XThemeName::XThemeName(std::function<void()> onChange) : onChange_(std::move(onChange)) {
  if (!x_) return;
  selection_ = atom(x_.native(), "_XSETTINGS_S0");
  settings_ = atom(x_.native(), "_XSETTINGS_SETTINGS");
  QCoreApplication::instance()->installNativeEventFilter(this);
}

XThemeName::~XThemeName() = default;

QByteArray XThemeName::read() {
  constexpr std::uint32_t kLongest = 1U << 16U;  // in units of four bytes
  if (!x_) return {};
  const auto owner = owned(xcb_get_selection_owner_reply(
      x_.native(), xcb_get_selection_owner(x_.native(), selection_), nullptr));
  if (!owner || owner->owner == XCB_NONE) return {};
  const auto property = owned(xcb_get_property_reply(
      x_.native(),
      xcb_get_property(x_.native(), 0, owner->owner, settings_, settings_, 0, kLongest), nullptr));
  if (!property) return {};
  const QByteArrayView data(static_cast<const char*>(xcb_get_property_value(property.get())),
                            xcb_get_property_value_length(property.get()));
  return xSettingsText(data, "Net/ThemeName").value_or(QByteArray());
}

/// Qt itself has asked the server for these events.
bool XThemeName::nativeEventFilter(const QByteArray& type, void* message, qintptr*) {
  constexpr std::uint8_t kSentByAClient = 0x80;
  if (type != "xcb_generic_event_t") return false;
  const auto* const event = static_cast<const xcb_generic_event_t*>(message);
  if ((event->response_type & ~kSentByAClient) != XCB_PROPERTY_NOTIFY) return false;
  const auto* const notify = static_cast<const xcb_property_notify_event_t*>(message);
  if (notify->atom == settings_ && onChange_) onChange_();
  return false;
}

}  // namespace voxtrel
