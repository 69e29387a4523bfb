#pragma once

#include <sys/types.h>

#include <chrono>
#include <string_view>

namespace scripted {

/// The number of the signal called `name` ("TERM", "SIGTERM", "15").
/// Fails by: throwing std::invalid_argument.
int signalNumber(std::string_view name);

void ignoreSignal(int signal);

/// On SIGTERM from now on: prints `text`, waits for `delay`, exits with `code`.
void endOnTerm(int code, std::chrono::milliseconds delay, std::string_view text);

/// Ends this process by `signal`, whatever it did about that signal before. Leaves no core file.
[[noreturn]] void dieBySignal(int signal);

/// Starts a process that holds the output open, or floods it, for `lifetime` at most, and that
/// outlives this one. Returns its process id.
pid_t startGrandchild(std::chrono::milliseconds lifetime, bool floods);

}  // namespace scripted
