#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <csignal>
#include <optional>

#include "common/posix/StopSignals.h"

namespace voxtrel {
namespace {

using Inherited = StopSignals::InheritedIgnores;

bool isReadable(int descriptor) {
  pollfd event{descriptor, POLLIN, 0};
  return ::poll(&event, 1, 0) == 1;
}

TEST(StopSignals, EachArrivesAtTheDescriptorAndIsTakenOnce) {
  StopSignals signals(Inherited::replace);
  EXPECT_FALSE(isReadable(signals.descriptor()));
  EXPECT_EQ(signals.take(), std::nullopt);
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
    ::kill(::getpid(), signal);
    EXPECT_TRUE(isReadable(signals.descriptor()));
    EXPECT_EQ(signals.take(), signal);
    EXPECT_FALSE(isReadable(signals.descriptor()));
  }
}

TEST(StopSignals, ComeThroughAlsoWhereTheyWereIgnoredOrBlockedAndGoBackAfterwards) {
  sigset_t blocked;
  sigemptyset(&blocked);
  sigaddset(&blocked, SIGINT);
  sigset_t before;
  pthread_sigmask(SIG_BLOCK, &blocked, &before);
  const auto handlerBefore = ::signal(SIGHUP, SIG_IGN);
  {
    StopSignals signals(Inherited::replace);
    ::raise(SIGINT);
    EXPECT_EQ(signals.take(), SIGINT);
    ::raise(SIGHUP);
    EXPECT_EQ(signals.take(), SIGHUP);
  }
  EXPECT_EQ(::signal(SIGHUP, handlerBefore), SIG_IGN);
  sigset_t after;
  pthread_sigmask(SIG_SETMASK, &before, &after);
  EXPECT_EQ(sigismember(&after, SIGINT), 1);
}

TEST(StopSignals, AStormOfThemNeverBlocksTheApplication) {
  StopSignals signals(Inherited::replace);
  for (int i = 0; i < 100'000; ++i) ::raise(SIGTERM);
  EXPECT_EQ(signals.take(), SIGTERM);
}

TEST(StopSignals, LeavesInterruptAndHangUpIgnoredWhereInheritedIgnoresAreKept) {
  for (const int signal : {SIGINT, SIGHUP, SIGTERM}) ::signal(signal, SIG_IGN);
  const StopSignals signals(Inherited::keep);
  ::raise(SIGINT);
  ::raise(SIGHUP);
  EXPECT_FALSE(signals.isRequested());
  ::raise(SIGTERM);
  EXPECT_TRUE(signals.isRequested()) << "SIGTERM always counts";
}

TEST(StopSignals, KeepsARequestUntilItIsTaken) {
  StopSignals signals(Inherited::keep);
  EXPECT_FALSE(signals.waitFor(std::chrono::milliseconds(1)));
  ::raise(SIGINT);
  EXPECT_TRUE(signals.waitFor(std::chrono::hours(1)));
  EXPECT_TRUE(signals.isRequested());
  signals.take();
  EXPECT_FALSE(signals.isRequested());
}

TEST(StopSignals, IgnoresOtherSignalsForAsLongAsItLives) {
  const auto handlerBefore = ::signal(SIGPIPE, SIG_DFL);
  {
    const StopSignals signals(Inherited::keep, {SIGPIPE});
    ::raise(SIGPIPE);
    EXPECT_FALSE(signals.isRequested());
  }
  EXPECT_EQ(::signal(SIGPIPE, handlerBefore), SIG_DFL);
}

}  // namespace
}  // namespace voxtrel
