#import "voxtrel/platform/macos/application/SparkleUpdater.h"

#import <AppKit/AppKit.h>

#include <utility>

#import "voxtrel/platform/macos/foundation/Strings.h"

/// The part of Sparkle's controller that is used here.
@protocol VXUpdaterController <NSObject>
- (instancetype)initWithStartingUpdater:(BOOL)startUpdater
                        updaterDelegate:(nullable id)updaterDelegate
                     userDriverDelegate:(nullable id)userDriverDelegate;
- (void)checkForUpdates:(nullable id)sender;
@end

namespace voxtrel {
namespace {

id makeController(Class controllerClass) {
  if (controllerClass == Nil) return nil;
  id<VXUpdaterController> unready = [controllerClass alloc];
  return [unready initWithStartingUpdater:YES updaterDelegate:nil userDriverDelegate:nil];
}

}  // namespace

SparkleUpdater::SparkleUpdater(Class controllerClass, std::string version)
    : version_(std::move(version)), controller_(makeController(controllerClass)) {}

Class SparkleUpdater::controllerClassOfThisBuild() {
  return NSClassFromString(@"SPUStandardUpdaterController");
}

void SparkleUpdater::checkForUpdates() {
  if (controller_ != nil) {
    [static_cast<id<VXUpdaterController>>(controller_) checkForUpdates:nil];
    return;
  }
  NSAlert* notice = [NSAlert new];
  notice.alertStyle = NSAlertStyleInformational;
  notice.messageText = toNSString("Voxtrel " + version_);
  notice.informativeText = @"This build has no update feed.";
  [notice addButtonWithTitle:@"OK"];
  [notice runModal];
}

}  // namespace voxtrel
