#import "voxtrel/platform/macos/session/WorkspaceSleepWatch.h"

#include <memory>
#include <utility>

namespace voxtrel {
namespace {

Subscription observe(NSNotificationName name, std::function<void()> handler) {
  auto owned = std::make_shared<const std::function<void()>>(std::move(handler));
  const std::weak_ptr<const std::function<void()>> weak = owned;
  NSNotificationCenter* center = NSWorkspace.sharedWorkspace.notificationCenter;
  // Without a queue, because only then the announcement certainly waits for the handler. The workspace
  // posts on the main thread.
  const id observer = [center addObserverForName:name
                                          object:nil
                                           queue:nil
                                      usingBlock:^(NSNotification*) {
                                        if (const auto held = weak.lock()) (*held)();
                                      }];
  return Subscription(
      [center, observer, owned = std::move(owned)] { [center removeObserver:observer]; });
}

}  // namespace

Subscription WorkspaceSleepWatch::onWillSleep(std::function<void()> handler) {
  return observe(NSWorkspaceWillSleepNotification, std::move(handler));
}

Subscription WorkspaceSleepWatch::onDidWake(std::function<void()> handler) {
  return observe(NSWorkspaceDidWakeNotification, std::move(handler));
}

}  // namespace voxtrel
