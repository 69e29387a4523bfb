#pragma once

#include "common/dbus/Bus.h"
#include "quillback/ports/Loop.h"

namespace voxtrel::quillback {

/// A connection to a message bus that waits on `loop`, which must outlive it. Null without such a bus.
/// `onClosed` is called at most once, when the connection has ended.
/// Thread: the loop's.
[[nodiscard]] std::unique_ptr<Bus> openBus(Bus::Kind kind, Loop& loop,
                                           std::function<void()> onClosed);

}  // namespace voxtrel::quillback
