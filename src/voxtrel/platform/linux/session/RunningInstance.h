#pragma once

#include <QString>
#include <optional>

#include "voxtrel/platform/Application.h"

namespace voxtrel {

/// The object under which the running application answers org.freedesktop.Application.
inline constexpr const char* kInstancePath = "/org/voxtrel/Voxtrel";

/// The request that this action of the interface stands for; none for an unknown one.
std::optional<StartRequest> requestOf(const QString& action);

/// Tells the running application what the user wants, with the desktop's permission to take the focus.
/// Blocks for the reply, two seconds at most.
/// Thread: the main thread.  Fails by: false, if none runs or it does not reply.
bool passOn(StartRequest request);

/// The same for a start that is only that. After `quit` it waits until the application's name is free,
/// five seconds at most, so that it can be started again at once. `argc` and `argv` as of main.
/// Returns the exit status: 1 after a line on standard error.
int passOnAndReport(StartRequest request, int& argc, char** argv);

}  // namespace voxtrel
