#include "support/scripted_engine/Endings.h"

#include <sys/resource.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <ctime>
#include <stdexcept>
#include <string>
#include <utility>

#include "support/scripted_engine/Command.h"

namespace scripted {
namespace {

/// Written before the handler is installed, read by it alone afterwards.
struct LastWords {
  std::array<char, 512> text{};
  std::size_t size = 0;
  timespec delay{};
  int code = 0;
};
LastWords lastWords;

constexpr std::array<std::pair<std::string_view, int>, 14> kSignals = {{{"ABRT", SIGABRT},
                                                                        {"ALRM", SIGALRM},
                                                                        {"BUS", SIGBUS},
                                                                        {"FPE", SIGFPE},
                                                                        {"HUP", SIGHUP},
                                                                        {"ILL", SIGILL},
                                                                        {"INT", SIGINT},
                                                                        {"KILL", SIGKILL},
                                                                        {"PIPE", SIGPIPE},
                                                                        {"QUIT", SIGQUIT},
                                                                        {"SEGV", SIGSEGV},
                                                                        {"TERM", SIGTERM},
                                                                        {"USR1", SIGUSR1},
                                                                        {"USR2", SIGUSR2}}};

timespec toTimespec(std::chrono::milliseconds time) {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time);
  const std::chrono::nanoseconds rest = time - seconds;
  return {static_cast<time_t>(seconds.count()), static_cast<long>(rest.count())};
}

void end(int) {
  [[maybe_unused]] const ssize_t written =
      ::write(STDOUT_FILENO, lastWords.text.data(), lastWords.size);
  ::nanosleep(&lastWords.delay, nullptr);
  ::_exit(lastWords.code);
}

void setDisposition(int signal, void (*handler)(int)) {
  struct sigaction action {};
  action.sa_handler = handler;
  ::sigaction(signal, &action, nullptr);
}

void limitLifetime(std::chrono::milliseconds lifetime) {
  setDisposition(SIGALRM, SIG_DFL);
  setDisposition(SIGTERM, SIG_DFL);
  itimerval timer{};
  timer.it_value.tv_sec = static_cast<time_t>(lifetime.count() / 1000);
  timer.it_value.tv_usec = static_cast<suseconds_t>(lifetime.count() % 1000 * 1000 + 1);
  ::setitimer(ITIMER_REAL, &timer, nullptr);
}

}  // namespace

int signalNumber(std::string_view name) {
  if (name.starts_with("SIG")) name.remove_prefix(3);
  for (const auto& [abbreviation, signal] : kSignals) {
    if (name == abbreviation) return signal;
  }
  const unsigned long long number = parseNumber(name);
  if (number == 0 || number >= NSIG) throw std::invalid_argument("no such signal");
  return static_cast<int>(number);
}

void ignoreSignal(int signal) {
  setDisposition(signal, SIG_IGN);
}

void endOnTerm(int code, std::chrono::milliseconds delay, std::string_view text) {
  lastWords.size = std::min(text.size(), lastWords.text.size());
  std::copy_n(text.data(), lastWords.size, lastWords.text.data());
  lastWords.delay = toTimespec(delay);
  lastWords.code = code;
  setDisposition(SIGTERM, end);
}

void dieBySignal(int signal) {
  const rlimit noCore{0, 0};
  ::setrlimit(RLIMIT_CORE, &noCore);
  setDisposition(signal, SIG_DFL);
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, signal);
  ::sigprocmask(SIG_UNBLOCK, &signals, nullptr);
  ::kill(::getpid(), signal);
  for (;;) ::pause();
}

pid_t startGrandchild(std::chrono::milliseconds lifetime, bool floods) {
  constexpr std::string_view kLine = "the grandchild goes on and on and on and on and on and on\n";
  const pid_t pid = ::fork();
  if (pid != 0) return pid;
  limitLifetime(lifetime);
  for (;;) {
    if (!floods) ::pause();
    if (floods && ::write(STDOUT_FILENO, kLine.data(), kLine.size()) < 0) ::_exit(0);
  }
}

}  // namespace scripted
