#include "platform/linux/TrayHost.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <utility>

#include "platform/linux/XEmbedTray.h"

namespace voxtrel {

namespace {

constexpr const char* kWatcherService = "org.kde.StatusNotifierWatcher";
constexpr std::chrono::seconds kXEmbedDelay{3};

}  // namespace

TrayHost::TrayHost(std::function<void(Kind)> onFound) : onFound_(std::move(onFound)) {
  xEmbedDelay_.setSingleShot(true);
  xEmbedDelay_.setInterval(kXEmbedDelay);
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
  xEmbedDelay_.start();
  watcher_ = std::make_unique<QDBusServiceWatcher>(kWatcherService, QDBusConnection::sessionBus(),
                                                   QDBusServiceWatcher::WatchForRegistration);
  QObject::connect(watcher_.get(), &QDBusServiceWatcher::serviceRegistered, &context_,
                   [this] { found(Kind::statusNotifier); });
  askForNotifierHost({});  // it may have come between the first answer and the watcher
}

void TrayHost::tryXEmbed() {
  if (!onFound_) return;
  if (hasXEmbedTray()) return found(Kind::xEmbed);
  if (xManagers_) return;
  // A panel that is just starting may take on the older role first, and the better one a moment
  // later.
  xManagers_ = std::make_unique<XManagerWatch>([this] { xEmbedDelay_.start(); });
}

void TrayHost::found(Kind kind) {
  xEmbedDelay_.stop();
  xManagers_.reset();
  if (watcher_) watcher_.release()->deleteLater();  // it may be what called
  if (const auto onFound = std::exchange(onFound_, nullptr)) onFound(kind);
}

}  // namespace voxtrel
