#include "voxtrel/platform/linux/notifications/FreedesktopNotifications.h"

#include <QGuiApplication>
#include <algorithm>
#include <utility>

#include "voxtrel/platform/linux/application/QtApplication.h"

namespace voxtrel {

namespace {

// They bound the memory when a daemon hangs or never reports that a notification was closed.
constexpr std::size_t kMaxWaiting = 16;
constexpr std::size_t kMaxShown = 64;

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
  // These desktops have no such question; the user can silence an application afterwards.
}

void FreedesktopNotifications::post(UserNotification notification) {
  QMetaObject::invokeMethod(
      &context_,
      [this, notification = std::move(notification)]() mutable {
        enqueue(std::move(notification));
      },
      Qt::QueuedConnection);
}

/// Asks for the capabilities once per batch, because the daemon may have been replaced.
void FreedesktopNotifications::enqueue(UserNotification notification) {
  const bool isAsking = !waiting_.empty();
  waiting_.push_back(std::move(notification));
  if (waiting_.size() > kMaxWaiting) waiting_.pop_front();
  if (isAsking) return;
  daemon_.queryCapabilities([this](auto capabilities) { sendWaiting(capabilities); });
}

void FreedesktopNotifications::sendWaiting(std::optional<NotificationCapabilities> capabilities) {
  const auto waiting = std::exchange(waiting_, {});
  if (!capabilities) return;
  for (const UserNotification& notification : waiting) present(notification, *capabilities);
}

/// The delegate decides while the application has the focus; otherwise everything is shown.
void FreedesktopNotifications::present(const UserNotification& notification,
                                       NotificationCapabilities capabilities) {
  const auto delegate = delegate_.lock();
  const bool hasFocus = QGuiApplication::focusWindow() != nullptr;
  if (!delegate || !hasFocus) {
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
  const quint32 replaces = same == shown_.end() ? 0 : same->where.id;
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
  if (shown_.size() > kMaxShown) shown_.pop_front();
}

void FreedesktopNotifications::forget(const ShownNotification& where) {
  std::erase_if(shown_, [&](const Shown& shown) { return shown.where == where; });
}

void FreedesktopNotifications::actionInvoked(const ShownNotification& where, const QString& action,
                                             const QString& token) {
  const auto found = std::find_if(shown_.begin(), shown_.end(),
                                  [&](const Shown& shown) { return shown.where == where; });
  if (found == shown_.end()) return;
  const NotificationAction* const chosen = findAction(*found, action.toStdString());
  if (chosen == nullptr) return;
  if (chosen->foreground) bringForward(token);
  respond(*found, chosen->identifier);
}

void FreedesktopNotifications::respond(const Shown& shown, const std::string& action) {
  const auto close = [this, where = shown.where] {
    forget(where);
    daemon_.close(where);
  };
  const NotificationResponse response{action, shown.identifier};
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

const NotificationAction* FreedesktopNotifications::findAction(
    const Shown& shown, const std::string& identifier) const {
  const auto* const category = findCategory(shown.categoryIdentifier);
  if (category == nullptr) return nullptr;
  const auto found =
      std::find_if(category->actions.begin(), category->actions.end(),
                   [&](const NotificationAction& each) { return each.identifier == identifier; });
  return found == category->actions.end() ? nullptr : &*found;
}

}  // namespace voxtrel
