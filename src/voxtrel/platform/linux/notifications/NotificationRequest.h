#pragma once

#include <QString>
#include <QStringList>
#include <QVariantMap>

#include "voxtrel/platform/Notifications.h"

namespace voxtrel {

/// What the desktop's notification daemon says it can do.
struct NotificationCapabilities {
  bool actions = false;
  bool bodyMarkup = false;

  static NotificationCapabilities parse(const QStringList& names);
};

/// The arguments of `Notify` that differ from one notification to the next.
struct NotificationRequest {
  QString summary;
  QString body;
  QStringList actions;  ///< identifier and title by turns
  QVariantMap hints;
};

/// `category` is null for a kind that was never installed: it has no buttons.
NotificationRequest makeNotificationRequest(const UserNotification& notification,
                                            const NotificationCategory* category,
                                            NotificationCapabilities capabilities,
                                            PresentationOptions options);

/// Whether `options` contains `flag`.
bool contains(PresentationOptions options, PresentationOptions flag);

}  // namespace voxtrel
