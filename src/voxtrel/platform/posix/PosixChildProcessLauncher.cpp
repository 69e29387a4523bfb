#include "voxtrel/platform/posix/PosixChildProcessLauncher.h"

#include <csignal>
#include <future>
#include <optional>
#include <string>
#include <utility>

#include "voxtrel/platform/posix/OutputReader.h"
#include "voxtrel/platform/posix/PosixChildProcess.h"
#include "voxtrel/platform/posix/SpawnedChild.h"

namespace voxtrel {
namespace {

/// With SIGCHLD ignored, which the application may have inherited, the system drops exit statuses.
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

/// One child from its start to the report of its exit: `begin`, `listen`, `watch`, in this order.
/// Thread: one after the other.  Owns: the child's options, the thread that reads its output.
class PosixChildProcessLauncher::Supervision {
 public:
  explicit Supervision(ChildOptions options) : options_(std::move(options)) {}

  /// Starts the child, which is killed when the calling thread ends.
  Started begin();
  /// Starts to read the child's output. If that fails, the child is killed.
  void listen();
  /// The work of the termination thread: returns when the exit has been reported.
  void watch();
  /// In place of `watch`, where there is no thread for it: kills the child and reports nothing.
  void abandon();

 private:
  const ChildOptions options_;
  std::optional<OutputReader> reader_;
  std::shared_ptr<ChildLifetime> lifetime_;
};

PosixChildProcessLauncher::Started PosixChildProcessLauncher::Supervision::begin() {
  auto output = Pipe::open();
  if (!output) return tl::unexpected(output.error());
  auto ended = Pipe::open();
  if (!ended) return tl::unexpected(ended.error());
  reader_.emplace(std::move(output->readEnd), std::move(*ended), options_.onOutput);
  auto child = spawnChild(options_, output->writeEnd.get());
  if (!child) return tl::unexpected(child.error());
  lifetime_ = std::make_shared<ChildLifetime>(std::move(*child));
  return std::make_shared<PosixChildProcess>(lifetime_);
}

void PosixChildProcessLauncher::Supervision::listen() {
  // Unread, the child would block as soon as the pipe is full.
  if (!reader_->start()) lifetime_->send(SIGKILL);
}

void PosixChildProcessLauncher::Supervision::watch() {
  const int status = lifetime_->reap();
  reader_->finish();
  if (options_.onExit) options_.onExit(status);
}

void PosixChildProcessLauncher::Supervision::abandon() {
  lifetime_->send(SIGKILL);
  lifetime_->reap();
}

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
  const auto supervision = std::make_shared<Supervision>(std::move(options));
  const Started child =
      livesAsLongAsProcess() ? startHere(supervision) : startOnOwnThread(supervision);
  if (!child) {
    return tl::unexpected("Cannot start " + executable + ": " + child.error().message());
  }
  remember(*child);
  return *child;
}

/// The faster way, which waits for no other thread.
PosixChildProcessLauncher::Started PosixChildProcessLauncher::startHere(
    const std::shared_ptr<Supervision>& supervision) {
  Started child = supervision->begin();
  if (!child) return child;
  const auto thread = terminationThreads_.run([supervision] {
    supervision->listen();
    supervision->watch();
  });
  if (thread) return child;
  supervision->abandon();
  return tl::unexpected(thread.error());
}

/// For a caller that may end before the child: a child ends with the thread that started it.
PosixChildProcessLauncher::Started PosixChildProcessLauncher::startOnOwnThread(
    const std::shared_ptr<Supervision>& supervision) {
  const auto started = std::make_shared<std::promise<Started>>();
  auto result = started->get_future();
  const auto thread = terminationThreads_.run([supervision, started] {
    Started child = supervision->begin();
    const bool isRunning = child.has_value();
    // Before the caller is woken: on a busy machine it runs only when this thread blocks.
    if (isRunning) supervision->listen();
    started->set_value(std::move(child));
    if (isRunning) supervision->watch();
  });
  if (!thread) return tl::unexpected(thread.error());
  return result.get();
}

/// Drops the children without an owner: they have been killed.
void PosixChildProcessLauncher::remember(const std::shared_ptr<ChildProcess>& child) {
  const std::lock_guard lock(mutex_);
  std::erase_if(children_, [](const auto& known) { return known.expired(); });
  children_.push_back(child);
}

}  // namespace voxtrel
