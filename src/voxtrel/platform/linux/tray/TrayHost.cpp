#include "voxtrel/platform/linux/tray/TrayHost.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <utility>

#include "voxtrel/platform/linux/tray/XEmbedTray.h"

namespace voxtrel {

namespace {

constexpr const char* kWatcherService = "org.kde.StatusNotifierWatcher";
constexpr std::chrono::seconds kXEmbedDelay{3};

}  // namespace

TrayHost::TrayHost(std::function<void(Kind)> onFound) : onFound_(std::move(onFound)) {
  xEmbedDelay_.setSingleShot(true);
  xEmbedDelay_.setInterval(kXEmbedDelay);
  QObject::connect(&xEmbedDelay_, &QTimer::timeout, &context_, [this] { tryXEmbed(); });
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
  busName_ = busName;
  // Watched before the first try, so that no host can come unseen between the two.
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
  auto* const answer =
      new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(request), &context_);
  QObject::connect(answer, &QDBusPendingCallWatcher::finished, &context_, [this, answer] {
    answer->deleteLater();
    if (answer->isError()) {
      waitForXEmbed();
    } else {
      registered();
    }
  });
}

void TrayHost::registered() {
  xEmbedDelay_.stop();
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
    return onFound_(Kind::xEmbed);
  }
  if (xManagers_) return;
  // A panel that is just starting may take on the older role first, and the better one a moment
  // later.
  xManagers_ = std::make_unique<XManagerWatch>([this] { xEmbedDelay_.start(); });
}

}  // namespace voxtrel
