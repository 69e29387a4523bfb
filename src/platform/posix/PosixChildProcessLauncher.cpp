#include "platform/posix/PosixChildProcessLauncher.h"

#include <signal.h>

#include <system_error>
#include <utility>

#include "platform/posix/ChildSupervision.h"

namespace voxtrel {
namespace {

/// Whoever started the application may have left SIGCHLD ignored; the system would then throw exit
/// statuses away.
void keepExitStatuses() {
  struct sigaction action {};
  if (::sigaction(SIGCHLD, nullptr, &action) != 0) return;
  const bool isIgnored = (action.sa_flags & SA_SIGINFO) == 0 && action.sa_handler == SIG_IGN;
  if (!isIgnored && (action.sa_flags & SA_NOCLDWAIT) == 0) return;
  if (isIgnored) action.sa_handler = SIG_DFL;
  action.sa_flags &= ~SA_NOCLDWAIT;
  ::sigaction(SIGCHLD, &action, nullptr);
}

}  // namespace

PosixChildProcessLauncher::PosixChildProcessLauncher() {
  keepExitStatuses();
}

PosixChildProcessLauncher::~PosixChildProcessLauncher() {
  const std::lock_guard lock(mutex_);
  for (const auto& child : children_) {
    if (const auto alive = child.lock()) alive->kill();
  }
}

ChildProcessLauncher::Result PosixChildProcessLauncher::start(ChildOptions options) {
  keepExitStatuses();
  const auto supervision = std::make_shared<ChildSupervision>(std::move(options));
  auto started = supervision->started();
  try {
    terminationThreads_.run([supervision] { supervision->run(); });
  } catch (const std::system_error& error) {
    return supervision->failure(error.code());
  }
  Result result = started.get();
  if (const auto* child = std::get_if<std::shared_ptr<ChildProcess>>(&result)) remember(*child);
  return result;
}

/// Forgets the children that nobody holds any more: they have been ended by that.
void PosixChildProcessLauncher::remember(const std::shared_ptr<ChildProcess>& child) {
  const std::lock_guard lock(mutex_);
  std::erase_if(children_, [](const auto& known) { return known.expired(); });
  children_.push_back(child);
}

}  // namespace voxtrel
