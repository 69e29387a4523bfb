#import "voxtrel/platform/macos/notifications/UserNotificationCenter.h"

#include <functional>
#include <mutex>
#include <utility>

#include "voxtrel/platform/Scheduling.h"
#import "voxtrel/platform/macos/foundation/Strings.h"

using voxtrel::MainLoop;
using voxtrel::NotificationDelegate;
using voxtrel::NotificationResponse;
using voxtrel::PresentationOptions;
using voxtrel::toString;
using voxtrel::UserNotification;

/// Passes what the center reports to the application's delegate, on the main thread. Without a delegate
/// the report is only answered.
@interface VXNotificationDelegate : NSObject <UNUserNotificationCenterDelegate>
- (instancetype)initWithMainLoop:(MainLoop*)mainLoop;
- (void)setTarget:(std::weak_ptr<NotificationDelegate>)target;
/// The main loop is gone after this.
- (void)close;
/// Runs `report` with the delegate, else `answer`.
- (void)report:(std::function<void(NotificationDelegate&)>)report
     otherwise:(std::function<void()>)answer;
@end

@implementation VXNotificationDelegate {
  std::mutex _mutex;
  MainLoop* _mainLoop;
  std::weak_ptr<NotificationDelegate> _target;
}

- (instancetype)initWithMainLoop:(MainLoop*)mainLoop {
  self = [super init];
  if (self != nil) _mainLoop = mainLoop;
  return self;
}

- (void)setTarget:(std::weak_ptr<NotificationDelegate>)target {
  const std::lock_guard lock(_mutex);
  _target = std::move(target);
}

- (void)close {
  const std::lock_guard lock(_mutex);
  _mainLoop = nullptr;
}

- (void)report:(std::function<void(NotificationDelegate&)>)report
     otherwise:(std::function<void()>)answer {
  const std::lock_guard lock(_mutex);
  if (_mainLoop == nullptr) return answer();
  _mainLoop->post([target = _target, report = std::move(report), answer = std::move(answer)] {
    if (const auto alive = target.lock()) return report(*alive);
    answer();
  });
}

- (void)userNotificationCenter:(UNUserNotificationCenter*)__unused center
    didReceiveNotificationResponse:(UNNotificationResponse*)response
             withCompletionHandler:(void (^)(void))completionHandler {
  NotificationResponse received{
      .actionIdentifier = toString(response.actionIdentifier),
      .notificationIdentifier = toString(response.notification.request.identifier)};
  [self report:[received = std::move(received), completionHandler](NotificationDelegate& delegate) {
    delegate.didReceive(received, [completionHandler] { completionHandler(); });
  }
      otherwise:[completionHandler] { completionHandler(); }];
}

- (void)userNotificationCenter:(UNUserNotificationCenter*)__unused center
       willPresentNotification:(UNNotification*)notification
         withCompletionHandler:
             (void (^)(UNNotificationPresentationOptions options))completionHandler {
  UNNotificationContent* content = notification.request.content;
  UserNotification shown{.identifier = toString(notification.request.identifier),
                         .title = toString(content.title),
                         .body = toString(content.body),
                         .categoryIdentifier = toString(content.categoryIdentifier)};
  const auto answer = [completionHandler](PresentationOptions options) {
    completionHandler(static_cast<UNNotificationPresentationOptions>(options));
  };
  [self report:[shown = std::move(shown), answer](NotificationDelegate& delegate) {
    delegate.willPresent(shown, answer);
  }
      otherwise:[answer] { answer(PresentationOptions::none); }];
}

@end

namespace voxtrel {
namespace {

static_assert(static_cast<NSUInteger>(PresentationOptions::sound) ==
              UNNotificationPresentationOptionSound);
static_assert(static_cast<NSUInteger>(PresentationOptions::banner) ==
              UNNotificationPresentationOptionBanner);

UNNotificationCategory* toCategory(const NotificationCategory& category) {
  NSMutableArray<UNNotificationAction*>* actions = [NSMutableArray array];
  for (const NotificationAction& action : category.actions) {
    const auto options =
        action.foreground ? UNNotificationActionOptionForeground : UNNotificationActionOptionNone;
    [actions addObject:[UNNotificationAction actionWithIdentifier:toNSString(action.identifier)
                                                            title:toNSString(action.title)
                                                          options:options]];
  }
  return [UNNotificationCategory categoryWithIdentifier:toNSString(category.identifier)
                                                actions:actions
                                      intentIdentifiers:@[]
                                                options:UNNotificationCategoryOptionNone];
}

}  // namespace

UserNotificationCenter::UserNotificationCenter(UNUserNotificationCenter* center, MainLoop& mainLoop)
    : center_(center), delegate_([[VXNotificationDelegate alloc] initWithMainLoop:&mainLoop]) {}

UserNotificationCenter::~UserNotificationCenter() {
  if (center_.delegate == delegate_) center_.delegate = nil;
  [delegate_ close];
}

UNUserNotificationCenter* UserNotificationCenter::centerOfThisBundle() {
  return NSBundle.mainBundle.bundleIdentifier == nil
             ? nil
             : [UNUserNotificationCenter currentNotificationCenter];
}

void UserNotificationCenter::setCategories(std::vector<NotificationCategory> categories) {
  NSMutableArray<UNNotificationCategory*>* all = [NSMutableArray array];
  for (const NotificationCategory& category : categories) [all addObject:toCategory(category)];
  [center_ setNotificationCategories:[NSSet setWithArray:all]];
}

void UserNotificationCenter::setDelegate(std::weak_ptr<NotificationDelegate> delegate) {
  [delegate_ setTarget:std::move(delegate)];
  center_.delegate = delegate_;
}

void UserNotificationCenter::requestAuthorization() {
  [center_ requestAuthorizationWithOptions:UNAuthorizationOptionAlert
                         completionHandler:^(BOOL, NSError*){
                         }];
}

void UserNotificationCenter::post(UserNotification notification) {
  @autoreleasepool {
    UNMutableNotificationContent* content = [UNMutableNotificationContent new];
    content.title = toNSString(notification.title);
    content.body = toNSString(notification.body);
    content.categoryIdentifier = toNSString(notification.categoryIdentifier);
    UNNotificationRequest* request =
        [UNNotificationRequest requestWithIdentifier:toNSString(notification.identifier)
                                             content:content
                                             trigger:nil];
    [center_ addNotificationRequest:request withCompletionHandler:nil];
  }
}

}  // namespace voxtrel
