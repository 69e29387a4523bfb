#pragma once

#include <QString>
#include <QStringList>
#include <QVariantMap>

#include "voxtrel/platform/Notifications.h"

namespace voxtrel {

/// What the notification daemon says it supports.
struct NotificationCapabilities {
  bool actions = false;
  bool bodyMarkup = false;

  static NotificationCapabilities parse(const QStringList& names);
};

/// The arguments of `Notify` that differ between notifications.
struct NotificationRequest {
  QString summary;
  QString body;
  QStringList actions;  ///< id, title, id, title, ...
  QVariantMap hints;
};

/// `category`: null if it was never set; then there are no buttons.
NotificationRequest makeNotificationRequest(const UserNotification& notification,
                                            const NotificationCategory* category,
                                            NotificationCapabilities capabilities,
                                            PresentationOptions options);

}  // namespace voxtrel
