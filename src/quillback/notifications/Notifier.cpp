#include "quillback/notifications/Notifier.h"

#include <systemd/sd-bus.h>

#include <string_view>
#include <utility>

#include "common/base/Utf8.h"

namespace voxtrel::quillback {
namespace {

constexpr std::size_t kMaxBodyBytes = 300;

constexpr Bus::Method method(const char* name) {
  return {"org.freedesktop.Notifications", "/org/freedesktop/Notifications",
          "org.freedesktop.Notifications", name};
}

/// Escapes what notification services take for markup.
std::string notificationBody(std::string_view text) {
  const std::string_view shown = utf8Prefix(text, kMaxBodyBytes);
  std::string body;
  for (const char c : shown) {
    switch (c) {
      case '&':
        body += "&amp;";
        break;
      case '<':
        body += "&lt;";
        break;
      case '>':
        body += "&gt;";
        break;
      default:
        body += c;
    }
  }
  if (shown.size() < text.size()) body += "…";
  return body;
}

/// The service decides how long it is shown.
constexpr std::int32_t kDefaultTimeout = -1;

void writeNotification(sd_bus_message& call, std::uint32_t replacedId, const std::string& title,
                       const std::string& body) {
  constexpr std::uint32_t kNoActions = 0;
  constexpr std::uint32_t kHints = 2;
  sd_bus_message_append(&call, "susssasa{sv}i", "Voxtrel", replacedId, "", title.c_str(),
                        body.c_str(), kNoActions, kHints, "category", "s", "transfer.complete",
                        "desktop-entry", "s", "org.voxtrel.Voxtrel", kDefaultTimeout);
}

}  // namespace

void Notifier::notify(const std::string& title, const std::string& body) {
  next_ = Notification{title, notificationBody(body)};
  if (!isSending_) sendNext();
}

void Notifier::sendNext() {
  if (!next_) return;
  const Notification now = *std::exchange(next_, std::nullopt);
  if (!bus_) {
    bus_ = openBus(Bus::Kind::session, loop_, [this] {
      isSending_ = false;
      bus_.reset();
      reportFailure();
    });
  }
  if (!bus_) return reportFailure();
  isSending_ = true;
  closeOld();
  bus_->call(
      method("Notify"),
      [&](sd_bus_message& call) { writeNotification(call, shownId_, now.title, now.body); },
      [this](sd_bus_message& reply) { onReply(reply); });
}

/// Plasma changes a notification that has left the screen only in its list.
void Notifier::closeOld() {
  if (shownId_ == 0 || loop_.now() - shownAt_ < onScreen_) return;
  bus_->call(
      method("CloseNotification"),
      [this](sd_bus_message& call) { sd_bus_message_append(&call, "u", shownId_); },
      [](sd_bus_message& /*reply*/) {});
  shownId_ = 0;
}

void Notifier::onReply(sd_bus_message& reply) {
  isSending_ = false;
  const bool isShown = !isError(reply) && sd_bus_message_read(&reply, "u", &shownId_) > 0;
  if (!isShown) reportFailure();
  shownAt_ = loop_.now();
  sendNext();
}

void Notifier::reportFailure() {
  shownId_ = 0;
  if (std::exchange(hasReported_, true)) return;
  output_.print("[quillback] No notification is shown: there is no notification service");
}

}  // namespace voxtrel::quillback
