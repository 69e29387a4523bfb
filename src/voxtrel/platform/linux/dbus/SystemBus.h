#pragma once

#include "common/dbus/Bus.h"

namespace voxtrel {

/// A connection to the system bus on Qt's event loop. Qt's own connection would wait for the bus, so one
/// that hangs would stop the application. Null without a system bus. `onClosed` is called at most once,
/// when the connection has ended.
/// Thread: the main thread.
[[nodiscard]] std::unique_ptr<Bus> openSystemBus(std::function<void()> onClosed);

}  // namespace voxtrel
