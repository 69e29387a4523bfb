#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <functional>
#include <string>
#include <vector>

#include "support/macos/Controls.h"
#include "support/macos/Growth.h"
#include "support/macos/RunLoop.h"
#import "voxtrel/platform/macos/application/AppKitApplication.h"
#import "voxtrel/platform/macos/application/RunLoopMainLoop.h"

namespace voxtrel::testing {
namespace {

using namespace std::chrono_literals;

/// Notes what it is told.
struct NotingDelegate : ApplicationDelegate {
  void applicationDidFinishLaunching() override { note("launched"); }
  void applicationWillTerminate() override { note("terminates"); }
  void quitRequested() override { note("quit"); }
  void reopenRequested() override { note("reopen"); }
  void settingsRequested() override { note("settings"); }
  void restartRequested() override { note("restart"); }

  void note(const char* call) {
    EXPECT_TRUE(NSThread.isMainThread);
    calls.emplace_back(call);
  }
  bool wasTold(const char* call) const {
    return std::find(calls.begin(), calls.end(), call) != calls.end();
  }

  std::vector<std::string> calls;
};

class AppKitApplicationTest : public ::testing::Test {
 protected:
  /// Runs the application, does `task` in it, and stops it once `done` holds.
  void run(const std::function<void()>& task, const std::function<bool()>& done) {
    loop.post(task);
    const auto deadline = std::chrono::steady_clock::now() + 10s;
    const auto end = loop.every(1ms, [&] {
      if (!done() && std::chrono::steady_clock::now() < deadline) return;
      [NSApp stop:nil];
      wakeModalLoop();
    });
    EXPECT_EQ(application.run(delegate), 0);
  }
  void run(const std::function<void()>& task) {
    run(task, [] { return true; });
  }
  void runWith(int signal) {
    run([signal] { ::kill(::getpid(), signal); }, [this] { return delegate.wasTold("quit"); });
  }
  static std::size_t countDescriptors() {
    return [NSFileManager.defaultManager contentsOfDirectoryAtPath:@"/dev/fd" error:nil].count;
  }
  static void announce(NSNotificationName name) {
    [NSNotificationCenter.defaultCenter postNotificationName:name object:NSApp];
  }

  RunLoopMainLoop loop;
  AppKitApplication application;
  NotingDelegate delegate;
};

TEST_F(AppKitApplicationTest, IsAnAccessoryWithoutADockIcon) {
  [NSApp setActivationPolicy:NSApplicationActivationPolicyRegular];
  run([] { EXPECT_EQ([NSApp activationPolicy], NSApplicationActivationPolicyAccessory); });
}

TEST_F(AppKitApplicationTest, TellsTheDelegateWhatAppKitReports) {
  run([this] {
    delegate.calls.clear();
    announce(NSApplicationDidFinishLaunchingNotification);
    EXPECT_TRUE([NSApp.delegate applicationShouldHandleReopen:NSApp hasVisibleWindows:NO]);
    announce(NSApplicationWillTerminateNotification);
  });
  EXPECT_EQ(delegate.calls, (std::vector<std::string>{"launched", "reopen", "terminates"}));
}

TEST_F(AppKitApplicationTest, AsksTheDelegateToQuitOnEverySignalToStop) {
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
    delegate.calls.clear();
    runWith(signal);
    EXPECT_TRUE(delegate.wasTold("quit")) << signal;
  }
}

TEST_F(AppKitApplicationTest, AsksAlsoWhereItWasStartedWithThatSignalIgnored) {
  std::signal(SIGINT, SIG_IGN);
  runWith(SIGINT);
  EXPECT_TRUE(delegate.wasTold("quit"));
  std::signal(SIGINT, SIG_DFL);
}

TEST_F(AppKitApplicationTest, AsksWhileAnAlertIsOpen) {
  NSWindow* const alert = [[NSWindow alloc] initWithContentRect:NSMakeRect(0, 0, 100, 100)
                                                      styleMask:NSWindowStyleMaskTitled
                                                        backing:NSBackingStoreBuffered
                                                          defer:NO];
  alert.releasedWhenClosed = NO;
  bool wasAskedInAlert = false;
  run(
      [&] {
        const auto watch = loop.every(5ms, [&] {
          if (delegate.wasTold("quit")) [NSApp stopModal];
          wakeModalLoop();
        });
        ::kill(::getpid(), SIGTERM);
        [NSApp runModalForWindow:alert];
        wasAskedInAlert = delegate.wasTold("quit");
      },
      [&] { return wasAskedInAlert; });
  [alert close];
  EXPECT_TRUE(wasAskedInAlert);
}

TEST_F(AppKitApplicationTest, GivesTheSignalsBackAfterwards) {
  struct sigaction before {};
  struct sigaction during {};
  struct sigaction after {};
  ::sigaction(SIGTERM, nullptr, &before);
  run([&] { ::sigaction(SIGTERM, nullptr, &during); });
  ::sigaction(SIGTERM, nullptr, &after);
  EXPECT_NE(during.sa_handler, before.sa_handler);
  EXPECT_EQ(after.sa_handler, before.sa_handler);
}

TEST_F(AppKitApplicationTest, TellsNothingOnceItHasRun) {
  WeakObject reports;
  @autoreleasepool {
    run([&] { reports.object = NSApp.delegate; });
  }
  delegate.calls.clear();
  EXPECT_TRUE(NSApp.delegate == nil);
  EXPECT_TRUE(reports.object == nil);
  announce(NSApplicationDidFinishLaunchingNotification);
  announce(NSApplicationWillTerminateNotification);
  EXPECT_TRUE(delegate.calls.empty());
}

TEST_F(AppKitApplicationTest, KeepsNothingOfAThousandRuns) {
  constexpr std::size_t kRounds = 1000;
  std::vector<WeakObject> delegates;
  run([] {});
  const std::size_t descriptors = countDescriptors();
  for (std::size_t round = 0; round < kRounds; ++round) {
    @autoreleasepool {
      run([&] { delegates.push_back({NSApp.delegate}); });
    }
  }
  EXPECT_EQ(delegates.size(), kRounds);
  EXPECT_EQ(countAlive(delegates), 0U);
  EXPECT_EQ(countDescriptors(), descriptors);
}

TEST_F(AppKitApplicationTest, KeepsNoMemoryOfAThousandRuns) {
  expectNoGrowth([this] {
    run([] {});
    drainAllModes();
  });
}

}  // namespace
}  // namespace voxtrel::testing
