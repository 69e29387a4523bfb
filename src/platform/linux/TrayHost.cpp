#include "platform/linux/TrayHost.h"

#include <xcb/xcb.h>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QGuiApplication>
#include <cstdlib>
#include <string>
#include <utility>

namespace voxtrel {

namespace {

constexpr const char* kWatcherService = "org.kde.StatusNotifierWatcher";
constexpr std::chrono::seconds kXEmbedDelay{3};

struct Free {
  void operator()(void* memory) const { std::free(memory); }
};

/// Whether some program owns the selection that makes it the X screen's tray.
bool hasXEmbedTray() {
  const auto* const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  if (x11 == nullptr) return false;
  xcb_connection_t* const connection = x11->connection();
  char* host = nullptr;
  int display = 0;
  int screen = 0;
  xcb_parse_display(nullptr, &host, &display, &screen);
  std::free(host);
  const std::string name = "_NET_SYSTEM_TRAY_S" + std::to_string(screen);
  const std::unique_ptr<xcb_intern_atom_reply_t, Free> atom(xcb_intern_atom_reply(
      connection,
      xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.c_str()),
      nullptr));
  if (!atom) return false;
  const std::unique_ptr<xcb_get_selection_owner_reply_t, Free> owner(xcb_get_selection_owner_reply(
      connection, xcb_get_selection_owner(connection, atom->atom), nullptr));
  return owner && owner->owner != XCB_NONE;
}

}  // namespace

TrayHost::TrayHost(std::function<void(Kind)> onFound) : onFound_(std::move(onFound)) {
  xEmbedDelay_.setSingleShot(true);
  QObject::connect(&xEmbedDelay_, &QTimer::timeout, &context_, [this] { tryXEmbed(); });
  askForNotifierHost([this] { waitForNotifierHost(); });
}

TrayHost::~TrayHost() = default;

void TrayHost::askForNotifierHost(std::function<void()> onAbsent) {
  QDBusMessage question = QDBusMessage::createMethodCall(
      "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "NameHasOwner");
  question << QString(kWatcherService);
  auto* const answer =
      new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(question), &context_);
  QObject::connect(answer, &QDBusPendingCallWatcher::finished, &context_,
                   [this, answer, onAbsent = std::move(onAbsent)] {
                     answer->deleteLater();
                     const QDBusPendingReply<bool> reply = *answer;
                     if (reply.isValid() && reply.value()) {
                       found(Kind::statusNotifier);
                     } else if (onAbsent) {
                       onAbsent();
                     }
                   });
}

void TrayHost::waitForNotifierHost() {
  xEmbedDelay_.start(kXEmbedDelay);
  watcher_ = std::make_unique<QDBusServiceWatcher>(kWatcherService, QDBusConnection::sessionBus(),
                                                   QDBusServiceWatcher::WatchForRegistration);
  QObject::connect(watcher_.get(), &QDBusServiceWatcher::serviceRegistered, &context_,
                   [this] { found(Kind::statusNotifier); });
  askForNotifierHost({});  // it may have come between the first answer and the watcher
}

void TrayHost::tryXEmbed() {
  if (onFound_ && hasXEmbedTray()) found(Kind::xEmbed);
}

void TrayHost::found(Kind kind) {
  xEmbedDelay_.stop();
  if (watcher_) watcher_.release()->deleteLater();  // it may be what called
  if (const auto onFound = std::exchange(onFound_, nullptr)) onFound(kind);
}

}  // namespace voxtrel
