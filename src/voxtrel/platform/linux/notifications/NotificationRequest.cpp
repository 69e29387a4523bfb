#include "voxtrel/platform/linux/notifications/NotificationRequest.h"

#include "voxtrel/platform/Desktop.h"

namespace voxtrel {

NotificationCapabilities NotificationCapabilities::parse(const QStringList& names) {
  return {names.contains("actions"), names.contains("body-markup")};
}

NotificationRequest makeNotificationRequest(const UserNotification& notification,
                                            const NotificationCategory* category,
                                            NotificationCapabilities capabilities,
                                            PresentationOptions options) {
  NotificationRequest request;
  request.summary = QString::fromStdString(notification.title);
  request.body = QString::fromStdString(notification.body);
  if (capabilities.bodyMarkup) request.body = request.body.toHtmlEscaped();
  if (capabilities.actions && category != nullptr) {
    for (const NotificationAction& action : category->actions) {
      request.actions << QString::fromStdString(action.identifier)
                      << QString::fromStdString(action.title);
    }
  }
  request.hints.insert("desktop-entry", QString(kBundleIdentifier));
  if (!contains(options, PresentationOptions::sound)) request.hints.insert("suppress-sound", true);
  return request;
}

}  // namespace voxtrel
