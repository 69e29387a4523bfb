#include "voxtrel/platform/linux/tray/TrayHost.h"

#include <QAbstractNativeEventFilter>
#include <QGuiApplication>
#include <cstdlib>
#include <string>
#include <utility>

#include "voxtrel/platform/linux/dbus/AsyncCall.h"
#include "voxtrel/platform/linux/x11/XServer.h"

namespace voxtrel {

namespace {

constexpr const char* kWatcherService = "org.kde.StatusNotifierWatcher";
constexpr std::chrono::seconds kXEmbedDelay{3};
constexpr std::chrono::seconds kNoneDelay{7};  ///< after that one
constexpr std::chrono::seconds kRegisterTimeout{25};

int screenNumber() {
  char* host = nullptr;
  int display = 0;
  int screen = 0;
  xcb_parse_display(nullptr, &host, &display, &screen);
  std::free(host);
  return screen;
}

/// Whether a program is the X screen's tray, which it shows by owning a selection. Blocks for the
/// server's replies.
bool hasXEmbedTray() {
  const auto server = qtXConnection();
  if (!server) return false;
  const xcb_atom_t tray = server->atom("_NET_SYSTEM_TRAY_S" + std::to_string(screenNumber()));
  const auto owner =
      server->reply<xcb_get_selection_owner_reply_t>(xcb_get_selection_owner(server->get(), tray));
  return owner && owner->owner != XCB_NONE;
}

}  // namespace

/// Reports when a program takes a role on the X screen, such as that of its tray.
/// Thread: the main thread.  Fails by: silence, without an X server.
class TrayHost::XManagerWatch final : public QAbstractNativeEventFilter {
 public:
  /// `onAppeared` is called while an X event is handled: it must not destroy this.
  explicit XManagerWatch(std::function<void()> onAppeared) : onAppeared_(std::move(onAppeared)) {
    const auto server = qtXConnection();
    if (!server) return;
    managerAtom_ = server->atom("MANAGER");
    qGuiApp->installNativeEventFilter(this);
  }

  bool nativeEventFilter(const QByteArray& type, void* message, qintptr*) override {
    if (type != "xcb_generic_event_t") return false;
    const bool isMessage =
        eventType(*static_cast<const xcb_generic_event_t*>(message)) == XCB_CLIENT_MESSAGE;
    if (isMessage &&
        static_cast<const xcb_client_message_event_t*>(message)->type == managerAtom_) {
      onAppeared_();
    }
    return false;
  }

 private:
  const std::function<void()> onAppeared_;
  xcb_atom_t managerAtom_ = XCB_ATOM_NONE;
};

TrayHost::TrayHost(std::function<void(Kind)> onFound) : onFound_(std::move(onFound)) {
  xEmbedDelay_.setSingleShot(true);
  xEmbedDelay_.setInterval(kXEmbedDelay);
  QObject::connect(&xEmbedDelay_, &QTimer::timeout, &context_, [this] { tryXEmbed(); });
  noneDelay_.setSingleShot(true);
  noneDelay_.setInterval(kNoneDelay);
  QObject::connect(&noneDelay_, &QTimer::timeout, &context_, [this] { onFound_(Kind::none); });
  QObject::connect(&watcher_, &QDBusServiceWatcher::serviceOwnerChanged, &context_,
                   [this](const QString&, const QString&, const QString& newOwner) {
                     if (newOwner.isEmpty()) {
                       waitForXEmbed();
                     } else {
                       registerItem();
                     }
                   });
}

TrayHost::~TrayHost() = default;

void TrayHost::announce(const QString& busName) {
  if (!QDBusConnection::sessionBus().isConnected()) return;
  busName_ = busName;
  // Before registering, so that a host that starts in between is noticed.
  watcher_.setConnection(QDBusConnection::sessionBus());
  watcher_.setWatchMode(QDBusServiceWatcher::WatchForOwnerChange);
  watcher_.addWatchedService(kWatcherService);
  registerItem();
}

void TrayHost::registerItem() {
  QDBusMessage request = QDBusMessage::createMethodCall(
      kWatcherService, "/StatusNotifierWatcher", kWatcherService, "RegisterStatusNotifierItem");
  request << busName_;
  request.setAutoStartService(false);
  const auto onReply = [this](const QDBusPendingReply<>& reply) {
    if (reply.isError()) {
      waitForXEmbed();
    } else {
      registered();
    }
  };
  callAsync(QDBusConnection::sessionBus(), request, context_, onReply, kRegisterTimeout);
}

void TrayHost::registered() {
  xEmbedDelay_.stop();
  noneDelay_.stop();
  xManagers_.reset();
  onFound_(Kind::statusNotifier);
}

void TrayHost::waitForXEmbed() {
  xManagers_.reset();
  xEmbedDelay_.start();
}

void TrayHost::tryXEmbed() {
  if (hasXEmbedTray()) {
    xManagers_.reset();
    noneDelay_.stop();
    return onFound_(Kind::xEmbed);
  }
  if (!noneDelay_.isActive()) noneDelay_.start();
  if (xManagers_) return;
  // A panel that is starting may take the older role first and the newer one a moment later.
  xManagers_ = std::make_unique<XManagerWatch>([this] { xEmbedDelay_.start(); });
}

}  // namespace voxtrel
