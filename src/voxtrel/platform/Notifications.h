#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace voxtrel {

struct NotificationAction {
  std::string identifier;
  std::string title;
  bool foreground = false;  ///< choosing it brings the application forward
};

/// A kind of notification, with the buttons that each of this kind has.
struct NotificationCategory {
  std::string identifier;
  std::vector<NotificationAction> actions;
};

struct UserNotification {
  std::string identifier;  ///< a second notification with the same one replaces the first
  std::string title;
  std::string body;
  std::string categoryIdentifier;
};

/// What the user did with a notification.
struct NotificationResponse {
  std::string actionIdentifier;
  std::string notificationIdentifier;
};

/// How a notification is shown while the application is in front; a set of flags.
enum class PresentationOptions : unsigned { none = 0, sound = 2, banner = 16 };

constexpr PresentationOptions operator|(PresentationOptions a, PresentationOptions b) {
  return static_cast<PresentationOptions>(static_cast<unsigned>(a) | static_cast<unsigned>(b));
}

constexpr bool contains(PresentationOptions options, PresentationOptions flag) {
  return (static_cast<unsigned>(options) & static_cast<unsigned>(flag)) != 0;
}

/// Receives the events of notifications.
/// Thread: the main thread.
class NotificationDelegate {
 public:
  virtual ~NotificationDelegate() = default;

  /// `completion` must be called once, last.
  virtual void didReceive(const NotificationResponse& response,
                          const std::function<void()>& completion) = 0;
  virtual void willPresent(const UserNotification& notification,
                           const std::function<void(PresentationOptions)>& completion) = 0;
};

/// The desktop's notifications.
/// Thread: `post` from any, the others from the main thread. No call waits for the desktop.
/// Fails by: dropping a notification that cannot be shown.
class Notifications {
 public:
  virtual ~Notifications() = default;

  virtual void setCategories(std::vector<NotificationCategory> categories) = 0;
  virtual void setDelegate(std::weak_ptr<NotificationDelegate> delegate) = 0;
  /// Asks the user whether notifications may be shown, on desktops that ask.
  virtual void requestAuthorization() = 0;
  virtual void post(UserNotification notification) = 0;
};

}  // namespace voxtrel
