#include <algorithm>
#include <mutex>
#include <string>
#include <vector>

#import "rig_services.h"
#include "support/macos/Observed.h"
#import "support/macos/whole/WholeApplication.h"

namespace voxtrel::testing {
namespace {

/// Keeps the notifications that the center is given, as long as it lives, and passes them on.
/// Thread: any.
class PostedNotifications {
 public:
  struct Posted {
    std::string identifier, body, category;
  };

  PostedNotifications()
      : replaced_(UNUserNotificationCenter.class,
                  @selector(addNotificationRequest:withCompletionHandler:), body(this)) {}

  std::vector<Posted> all() const {
    const std::lock_guard guard(lock_);
    return posted_;
  }

 private:
  using Add = void (*)(id, SEL, UNNotificationRequest*, id);

  static id body(PostedNotifications* self) {
    return ^(UNUserNotificationCenter* center, UNNotificationRequest* request, id handler) {
      self->keep(request);
      reinterpret_cast<Add>(self->replaced_.original())(
          center, @selector(addNotificationRequest:withCompletionHandler:), request, handler);
    };
  }
  void keep(UNNotificationRequest* request) {
    const std::lock_guard guard(lock_);
    posted_.push_back({request.identifier.UTF8String, request.content.body.UTF8String,
                       request.content.categoryIdentifier.UTF8String});
  }

  mutable std::mutex lock_;
  std::vector<Posted> posted_;
  const ReplacedMethod replaced_;
};

class WholeCrashTest : public WholeApplication {
 protected:
  bool isPosted(std::size_t count) const {
    return runUntil([&] { return posted.all().size() == count; });
  }
  void press(const char* action) const {
    NSString* const identifier = @(posted.all().back().identifier.c_str());
    ASSERT_TRUE([[RigServices deliveredIdentifiers] containsObject:identifier]);
    [RigServices clickNotification:identifier action:@(action)];
  }
  /// Crashes it as often as it is started again.
  void crashForGood() {
    for (std::size_t crash = 1; crash <= 4; ++crash) {
      ASSERT_TRUE(engineStarts()) << crash;
      tell("exit 7");
      ASSERT_TRUE(isPosted(crash));
    }
    ASSERT_TRUE(shows("Error: Exited with code 7", @"mic.slash"));
  }

  const PostedNotifications posted;
};

TEST_F(WholeCrashTest, IsAnnouncedAndTheEngineComesBackAfterASecond) {
  launchToEngine();
  const auto first = files.find();
  const auto start = std::chrono::steady_clock::now();
  tell("exit 1");
  ASSERT_TRUE(isPosted(1));
  EXPECT_EQ(posted.all()[0].body, "Process crashed. Restarting (attempt 1/3)...");
  EXPECT_EQ(posted.all()[0].category, "CRASH_CATEGORY");
  ASSERT_TRUE(engineStarts());
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(1000));
  EXPECT_NE(files.find(), first);
  EXPECT_TRUE(shows("Loading model...", @"mic.badge.xmark"));
}

TEST_F(WholeCrashTest, CountsAnewOnceTheEngineWasReady) {
  launchToEngine();
  tell("signal SEGV");
  ASSERT_TRUE(isPosted(1));
  ASSERT_TRUE(engineStarts());
  tell("print Ready.");
  ASSERT_TRUE(shows(kReady, @"mic"));
  tell("signal SEGV");
  ASSERT_TRUE(isPosted(2));
  EXPECT_EQ(posted.all()[1].body, posted.all()[0].body);
}

TEST_F(WholeCrashTest, StopsAfterTheFourthAndRestartsFromTheNotification) {
  launchToEngine();
  crashForGood();
  EXPECT_EQ(posted.all().back().body, "Process crashed 3 times. Stopped. Use menu bar to restart.");
  press("com.apple.UNNotificationDefaultActionIdentifier");
  runFor(std::chrono::milliseconds(100));
  EXPECT_FALSE(engineRuns()) << "a click on the notification is not its button";
  press("RESTART_ACTION");
  EXPECT_TRUE(engineStarts());
  EXPECT_TRUE(shows("Loading model...", @"mic.badge.xmark"));
}

TEST_F(WholeCrashTest, IsSilentWhereNotificationsAreRefused) {
  RigServices.notificationsGranted = NO;
  launchToEngine();
  tell("exit 1");
  ASSERT_TRUE(isPosted(1));
  NSString* const identifier = @(posted.all()[0].identifier.c_str());
  EXPECT_FALSE([[RigServices deliveredIdentifiers] containsObject:identifier]);
  EXPECT_TRUE(engineStarts());
}

TEST_F(WholeCrashTest, IsNotWhatAnOrderlyEndIs) {
  launchToEngine();
  tell("exit 0");
  ASSERT_TRUE(shows(kStopped, @"mic.slash"));
  EXPECT_TRUE(posted.all().empty());
}

TEST_F(WholeCrashTest, HasNoButtonOnceTheApplicationIsGone) {
  launchToEngine();
  tell("exit 1");
  ASSERT_TRUE(isPosted(1));
  destroy();
  press("RESTART_ACTION");
  runFor(std::chrono::milliseconds(100));
  EXPECT_FALSE(engineRuns());
}

}  // namespace
}  // namespace voxtrel::testing
