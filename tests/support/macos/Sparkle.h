#pragma once

#import <Foundation/Foundation.h>

/// Stands in for Sparkle's controller.
@interface TestUpdaterController : NSObject
- (instancetype)initWithStartingUpdater:(BOOL)startUpdater
                        updaterDelegate:(id)updaterDelegate
                     userDriverDelegate:(id)userDriverDelegate;
- (void)checkForUpdates:(id)sender;
@property (nonatomic, readonly) BOOL started;
@property (nonatomic, readonly) BOOL hasDelegates;
@property (nonatomic, readonly) int checks;
/// As Sparkle's: no, while a check is on its way.
@property (nonatomic) BOOL isBusy;
@end
