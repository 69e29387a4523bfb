#include "voxtrel/platform/linux/notifications/FreedesktopNotifications.h"

#include <QGuiApplication>
#include <algorithm>
#include <utility>

#include "voxtrel/platform/linux/windows/WindowActivation.h"

namespace voxtrel {

namespace {

/// Enough for a person, and little enough when a daemon hangs or never tells that one was closed.
constexpr std::size_t kMostWaiting = 16;
constexpr std::size_t kMostShown = 64;

}  // namespace

FreedesktopNotifications::FreedesktopNotifications()
    : daemon_({[this](const auto& where, const QString& action, const QString& token) {
                 actionInvoked(where, action, token);
               },
               [this](const auto& where) { forget(where); }}) {}

void FreedesktopNotifications::setCategories(std::vector<NotificationCategory> categories) {
  categories_ = std::move(categories);
}

void FreedesktopNotifications::setDelegate(std::weak_ptr<NotificationDelegate> delegate) {
  delegate_ = std::move(delegate);
}

void FreedesktopNotifications::requestAuthorization() {
  // These desktops let the user silence an application, but have nothing to ask.
}

void FreedesktopNotifications::post(UserNotification notification) {
  QMetaObject::invokeMethod(
      &context_,
      [this, notification = std::move(notification)]() mutable {
        enqueue(std::move(notification));
      },
      Qt::QueuedConnection);
}

/// The daemon is asked afresh for every batch: it may have been replaced since the last.
void FreedesktopNotifications::enqueue(UserNotification notification) {
  const bool isAsking = !waiting_.empty();
  waiting_.push_back(std::move(notification));
  if (waiting_.size() > kMostWaiting) waiting_.pop_front();
  if (isAsking) return;
  daemon_.queryCapabilities([this](auto capabilities) { sendWaiting(capabilities); });
}

void FreedesktopNotifications::sendWaiting(std::optional<NotificationCapabilities> capabilities) {
  const auto waiting = std::exchange(waiting_, {});
  if (!capabilities) return;
  for (const UserNotification& notification : waiting) present(notification, *capabilities);
}

/// The delegate decides while the application is in front; otherwise everything is shown.
void FreedesktopNotifications::present(const UserNotification& notification,
                                       NotificationCapabilities capabilities) {
  const auto delegate = delegate_.lock();
  const bool isInFront = QGuiApplication::focusWindow() != nullptr;
  if (!delegate || !isInFront) {
    send(notification, capabilities, PresentationOptions::sound);
    return;
  }
  delegate->willPresent(notification,
                        [this, notification, capabilities](PresentationOptions options) {
                          if (contains(options, PresentationOptions::banner))
                            send(notification, capabilities, options);
                        });
}

void FreedesktopNotifications::send(const UserNotification& notification,
                                    NotificationCapabilities capabilities,
                                    PresentationOptions options) {
  const auto same = std::find_if(shown_.begin(), shown_.end(), [&](const Shown& shown) {
    return shown.identifier == notification.identifier;
  });
  const quint32 replaces = same == shown_.end() ? 0 : same->where.number;
  const NotificationRequest request = makeNotificationRequest(
      notification, findCategory(notification.categoryIdentifier), capabilities, options);
  daemon_.notify(request, replaces,
                 [this, identifier = notification.identifier,
                  category = notification.categoryIdentifier](auto where) {
                   if (where) remember({*where, identifier, category});
                 });
}

void FreedesktopNotifications::remember(Shown shown) {
  forget(shown.where);
  shown_.push_back(std::move(shown));
  if (shown_.size() > kMostShown) shown_.pop_front();
}

void FreedesktopNotifications::forget(const ShownNotification& where) {
  std::erase_if(shown_, [&](const Shown& shown) { return shown.where == where; });
}

void FreedesktopNotifications::actionInvoked(const ShownNotification& where, const QString& action,
                                             const QString& token) {
  const auto shown = std::find_if(shown_.begin(), shown_.end(),
                                  [&](const Shown& each) { return each.where == where; });
  if (shown == shown_.end()) return;
  const NotificationResponse response{action.toStdString(), shown->identifier};
  const auto* const category = findCategory(shown->categoryIdentifier);
  if (category == nullptr) return;
  const auto offered = std::find_if(
      category->actions.begin(), category->actions.end(),
      [&](const NotificationAction& each) { return each.identifier == response.actionIdentifier; });
  if (offered == category->actions.end()) return;
  if (offered->foreground) bringForward(token);
  const auto close = [this, where] {
    forget(where);
    daemon_.close(where);
  };
  if (const auto delegate = delegate_.lock()) {
    delegate->didReceive(response, close);
  } else {
    close();
  }
}

const NotificationCategory* FreedesktopNotifications::findCategory(
    const std::string& identifier) const {
  const auto found =
      std::find_if(categories_.begin(), categories_.end(),
                   [&](const NotificationCategory& each) { return each.identifier == identifier; });
  return found == categories_.end() ? nullptr : &*found;
}

}  // namespace voxtrel
