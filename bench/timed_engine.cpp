// An engine that records when it started, when it wrote each line and when it ended.

#include <signal.h>
#include <time.h>

#include "bench/EngineTimes.h"

namespace {

voxtrel::bench::EngineTimes* times = nullptr;

void recordTheEnd(int /*signal*/) {
  times->exiting = voxtrel::bench::nowNs();
  ::_exit(0);
}

}  // namespace

int main(int /*argc*/, char** argv) {
  const auto entered = voxtrel::bench::nowNs();
  times = voxtrel::bench::EngineTimes::shareWith(argv[0]);
  if (times == nullptr) return 1;
  times->mainEntered = entered;
  ::signal(SIGTERM, recordTheEnd);
  constexpr char kLine[] = "Ready.\n";
  for (int line = 0; line < times->linesToWrite; ++line) {
    const timespec pause{0, 2'000'000};  // 2 ms
    ::nanosleep(&pause, nullptr);
    times->written.at(static_cast<std::size_t>(line)) = voxtrel::bench::nowNs();
    if (::write(STDOUT_FILENO, kLine, sizeof kLine - 1) < 0) return 1;
  }
  for (;;) ::pause();
}
