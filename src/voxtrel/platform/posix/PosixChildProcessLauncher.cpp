#include "voxtrel/platform/posix/PosixChildProcessLauncher.h"

#include <csignal>
#include <future>
#include <string>
#include <system_error>
#include <utility>

#include "voxtrel/platform/posix/ChildSetup.h"
#include "voxtrel/platform/posix/ChildSupervision.h"

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
  const std::string executable = options.executable;
  const auto supervision = std::make_shared<ChildSupervision>(std::move(options));
  try {
    const auto child =
        livesAsLongAsProcess() ? startHere(supervision) : startOnOwnThread(supervision);
    remember(child);
    return child;
  } catch (const std::system_error& error) {
    return tl::unexpected("Cannot start " + executable + ": " + error.code().message());
  }
}

/// The short way: nobody waits for another thread.
std::shared_ptr<ChildProcess> PosixChildProcessLauncher::startHere(
    const std::shared_ptr<ChildSupervision>& supervision) {
  auto child = supervision->begin();
  try {
    terminationThreads_.run([supervision] {
      supervision->listen();
      supervision->watch();
    });
  } catch (const std::system_error&) {
    supervision->abandon();
    throw;
  }
  return child;
}

/// For a caller that may end before the child: a child ends with the thread that made it.
std::shared_ptr<ChildProcess> PosixChildProcessLauncher::startOnOwnThread(
    const std::shared_ptr<ChildSupervision>& supervision) {
  std::shared_ptr<ChildProcess> child;  // written by the new thread until it keeps its promise
  const auto begun = std::make_shared<std::promise<std::error_code>>();
  auto outcome = begun->get_future();
  terminationThreads_.run([supervision, begun, &child] {
    try {
      child = supervision->begin();
    } catch (const std::system_error& error) {
      begun->set_value(error.code());
      return;
    }
    // Before the caller is woken: on a busy machine it runs only when this thread stands still.
    supervision->listen();
    begun->set_value({});
    supervision->watch();
  });
  if (const std::error_code error = outcome.get()) throw std::system_error(error);
  return child;
}

/// Forgets the children that nobody holds any more: they have been ended by that.
void PosixChildProcessLauncher::remember(const std::shared_ptr<ChildProcess>& child) {
  const std::lock_guard lock(mutex_);
  std::erase_if(children_, [](const auto& known) { return known.expired(); });
  children_.push_back(child);
}

}  // namespace voxtrel
