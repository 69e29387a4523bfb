#pragma once

#include <string>

#include "common/base/SessionKind.h"
#include "voxtrel/platform/Notifications.h"

namespace voxtrel {

/// The notification that says how to make the push-to-talk key visible in this session.
/// `reason`: the engine's, without a full stop, or empty.
UserNotification keyHiddenNotification(SessionKind session, DesktopFamily desktop,
                                       const std::string& reason);

}  // namespace voxtrel
