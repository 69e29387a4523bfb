#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <thread>

#import "rig_services.h"
#include "support/macos/Controls.h"
#include "support/macos/Growth.h"
#include "support/macos/Observed.h"
#import "support/macos/RunLoop.h"
#import "voxtrel/platform/macos/application/RunLoopMainLoop.h"
#import "voxtrel/platform/macos/notifications/UserNotificationCenter.h"

namespace voxtrel {
namespace {

struct Recorder : NotificationDelegate {
  void didReceive(const NotificationResponse& response,
                  const std::function<void()>& completion) override {
    responses.push_back(response.notificationIdentifier + "/" + response.actionIdentifier);
    isOnMain = NSThread.isMainThread;
    completion();
  }
  void willPresent(const UserNotification& notification,
                   const std::function<void(PresentationOptions)>& completion) override {
    presented.push_back(notification.title + "/" + notification.body + "/" +
                        notification.categoryIdentifier);
    completion(PresentationOptions::banner | PresentationOptions::sound);
  }

  std::vector<std::string> responses;
  std::vector<std::string> presented;
  bool isOnMain = false;
};

struct UserNotificationCenterTest : ::testing::Test {
  UserNotificationCenterTest() { allow(YES); }

  static void allow(BOOL granted) { RigServices.notificationsGranted = granted; }

  bool isDelivered(NSString* identifier) {
    return runUntil([&] { return [[RigServices deliveredIdentifiers] containsObject:identifier]; },
                    std::chrono::milliseconds(300));
  }

  void deliver(const std::string& identifier) {
    notifications->requestAuthorization();
    notifications->post({identifier, "Voxtrel", "Process crashed.", "CRASH_CATEGORY"});
    ASSERT_TRUE(isDelivered(@(identifier.c_str())));
  }

  RunLoopMainLoop mainLoop;
  UNUserNotificationCenter* const center = [UNUserNotificationCenter currentNotificationCenter];
  std::unique_ptr<UserNotificationCenter> notifications =
      std::make_unique<UserNotificationCenter>(center, mainLoop);
  std::shared_ptr<Recorder> delegate = std::make_shared<Recorder>();
};

TEST_F(UserNotificationCenterTest, aNotificationIsShown) {
  deliver("shown");
}

TEST_F(UserNotificationCenterTest, nothingIsShownWhereTheUserRefuses) {
  allow(NO);
  notifications->requestAuthorization();
  notifications->post({"refused", "Voxtrel", "Process crashed.", "CRASH_CATEGORY"});
  EXPECT_FALSE(isDelivered(@"refused"));
}

TEST_F(UserNotificationCenterTest, postsFromAnotherThreadAreShown) {
  notifications->requestAuthorization();
  std::thread([&] { notifications->post({"other thread", "Voxtrel", "", ""}); }).join();
  EXPECT_TRUE(isDelivered(@"other thread"));
}

TEST_F(UserNotificationCenterTest, theUsersAnswerReachesTheDelegateOnTheMainThread) {
  notifications->setDelegate(delegate);
  deliver("answered");
  std::thread([] { [RigServices clickNotification:@"answered" action:@"RESTART_ACTION"]; }).join();
  EXPECT_TRUE(delegate->responses.empty());
  ASSERT_TRUE(runUntil([&] { return !delegate->responses.empty(); }));
  EXPECT_THAT(delegate->responses, ::testing::ElementsAre("answered/RESTART_ACTION"));
  EXPECT_TRUE(delegate->isOnMain);
}

TEST_F(UserNotificationCenterTest, theSystemIsAnsweredOnceAndLast) {
  notifications->setDelegate(delegate);
  deliver("completed");
  int completions = 0;
  int* const count = &completions;
  UNNotificationResponse* response = [UNNotificationResponse new];
  [center.delegate userNotificationCenter:center
           didReceiveNotificationResponse:response
                    withCompletionHandler:^{
                      ++*count;
                    }];
  EXPECT_EQ(completions, 0);
  ASSERT_TRUE(runUntil([&] { return completions > 0; }));
  runOnce();
  EXPECT_EQ(completions, 1);
}

TEST_F(UserNotificationCenterTest, aNotificationIsPresentedAsTheDelegateSays) {
  notifications->setDelegate(delegate);
  UNNotificationPresentationOptions options = 0;
  auto* const answer = &options;
  [center.delegate userNotificationCenter:center
                  willPresentNotification:[UNNotification new]
                    withCompletionHandler:^(UNNotificationPresentationOptions chosen) {
                      *answer = chosen;
                    }];
  ASSERT_TRUE(runUntil([&] { return options != 0; }));
  EXPECT_EQ(options, 18U);
  EXPECT_EQ(delegate->presented.size(), 1U);
}

TEST_F(UserNotificationCenterTest, theSystemIsAnsweredWhereTheDelegateIsGone) {
  notifications->setDelegate(delegate);
  delegate.reset();
  bool isCompleted = false;
  bool* const completed = &isCompleted;
  [center.delegate userNotificationCenter:center
           didReceiveNotificationResponse:[UNNotificationResponse new]
                    withCompletionHandler:^{
                      *completed = true;
                    }];
  EXPECT_TRUE(runUntil([&] { return isCompleted; }));
}

TEST_F(UserNotificationCenterTest, nothingIsCalledOnceTheOwnerIsGone) {
  notifications->setDelegate(delegate);
  const id<UNUserNotificationCenterDelegate> reports = center.delegate;
  notifications.reset();
  EXPECT_TRUE(center.delegate == nil);
  bool isCompleted = false;
  bool* const completed = &isCompleted;
  [reports userNotificationCenter:center
      didReceiveNotificationResponse:[UNNotificationResponse new]
               withCompletionHandler:^{
                 *completed = true;
               }];
  EXPECT_TRUE(isCompleted);
  runOnce();
  EXPECT_TRUE(delegate->responses.empty());
}

TEST_F(UserNotificationCenterTest, theActionOfTheCategoryBringsTheApplicationForward) {
  __block std::string made;
  const testing::ReplacedMethod replaced(
      object_getClass(UNNotificationAction.class), @selector(actionWithIdentifier:title:options:),
      ^UNNotificationAction*(Class, NSString* identifier, NSString* title,
                             UNNotificationActionOptions options) {
        made = std::string(identifier.UTF8String) + "/" + title.UTF8String + "/" +
               std::to_string(options);
        return [UNNotificationAction new];
      });
  notifications->setCategories({{"CRASH_CATEGORY", {{"RESTART_ACTION", "Restart", true}}}});
  EXPECT_EQ(made, "RESTART_ACTION/Restart/4");
}

TEST_F(UserNotificationCenterTest, onlyAlertsAreAskedFor) {
  __block UNAuthorizationOptions asked = 0;
  const testing::ReplacedMethod replaced(
      UNUserNotificationCenter.class, @selector(requestAuthorizationWithOptions:completionHandler:),
      ^(UNUserNotificationCenter*, UNAuthorizationOptions options, id) {
        asked = options;
      });
  notifications->requestAuthorization();
  EXPECT_EQ(asked, UNAuthorizationOptionAlert);
}

TEST_F(UserNotificationCenterTest, nothingIsShownWithoutABundle) {
  UserNotificationCenter nowhere(nil, mainLoop);
  nowhere.setCategories({{"CRASH_CATEGORY", {{"RESTART_ACTION", "Restart", true}}}});
  nowhere.setDelegate(delegate);
  nowhere.requestAuthorization();
  nowhere.post({"nowhere", "Voxtrel", "", ""});
  EXPECT_FALSE(isDelivered(@"nowhere"));
}

TEST_F(UserNotificationCenterTest, aThousandRoundsKeepNothing) {
  __weak id reports = nil;
  for (int i = 0; i < 1000; ++i) {
    @autoreleasepool {
      UserNotificationCenter shortLived(center, mainLoop);
      shortLived.setCategories({{"CRASH_CATEGORY", {{"RESTART_ACTION", "Restart", true}}}});
      shortLived.setDelegate(delegate);
      reports = center.delegate;
      ASSERT_TRUE(reports != nil);
    }
  }
  EXPECT_TRUE(reports == nil);
  EXPECT_EQ(delegate.use_count(), 1);
}

TEST_F(UserNotificationCenterTest, aThousandPostsKeepNothing) {
  constexpr std::size_t kRounds = 1000;
  __block std::vector<testing::WeakObject> requests;
  const testing::ReplacedMethod replaced(
      UNUserNotificationCenter.class, @selector(addNotificationRequest:withCompletionHandler:),
      ^(UNUserNotificationCenter*, UNNotificationRequest* request, id) {
        requests.push_back({request});
        requests.push_back({request.content});
      });
  for (std::size_t round = 0; round < kRounds; ++round) {
    @autoreleasepool {
      notifications->post({std::to_string(round), "Voxtrel", "Process crashed.", "CRASH_CATEGORY"});
    }
  }
  EXPECT_EQ(requests.size(), 2 * kRounds);
  EXPECT_EQ(testing::countAlive(requests), 0U);
}

TEST_F(UserNotificationCenterTest, aThousandAnswersKeepNothing) {
  notifications->setDelegate(delegate);
  std::size_t completions = 0;
  auto* const count = &completions;
  expectNoGrowth([&] {
    [center.delegate userNotificationCenter:center
             didReceiveNotificationResponse:[UNNotificationResponse new]
                      withCompletionHandler:^{
                        ++*count;
                      }];
    testing::drain();
    delegate->responses.clear();
  });
  EXPECT_TRUE(runUntil([&] { return completions == 1100; })) << completions;
}

}  // namespace
}  // namespace voxtrel
