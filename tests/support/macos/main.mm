// The program of the macOS adapters' tests: an accessory application, as the real one is.
#import <AppKit/AppKit.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>

#include "support/macos/RunLoop.h"

namespace {

/// Ends a run in which a test hangs, for instance in a modal loop.
class Alarm : public testing::EmptyTestEventListener {
  void OnTestStart(const testing::TestInfo&) override { voxtrel::restartTestLimit(); }
  void OnTestEnd(const testing::TestInfo&) override { ::alarm(0); }
};

void endHungRun(int) {
  constexpr char kMessage[] = "A test hangs.\n";
  [[maybe_unused]] const auto written = ::write(STDERR_FILENO, kMessage, sizeof kMessage - 1);
  ::_exit(3);
}

}  // namespace

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  testing::UnitTest::GetInstance()->listeners().Append(new Alarm);
  std::signal(SIGALRM, endHungRun);
  std::signal(SIGPIPE, SIG_IGN);
  @autoreleasepool {
    [NSApplication sharedApplication];
    [NSApp setActivationPolicy:NSApplicationActivationPolicyAccessory];
    [NSApp finishLaunching];
    const int status = RUN_ALL_TESTS();
    if (testing::UnitTest::GetInstance()->test_to_run_count() == 0) return 1;
    std::fflush(nullptr);
    // The frameworks' own threads do not expect the end of the process.
    ::_exit(status);
  }
}
