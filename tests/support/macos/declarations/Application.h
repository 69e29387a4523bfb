// Declarations of AppKit: run loop modes, the application, its menu and its life.
#pragma once

#import <AppKit/AppKit.h>

#import "Foundation.h"

NS_ASSUME_NONNULL_BEGIN

APPKIT_EXTERN NSRunLoopMode NSModalPanelRunLoopMode;
APPKIT_EXTERN NSRunLoopMode NSEventTrackingRunLoopMode;

@interface NSMenuItem (Action)
@property (nullable) SEL action;
@end

@interface NSMenu (Rows)
- (nullable NSMenuItem*)itemAtIndex:(NSInteger)index;
@end

@protocol NSApplicationDelegate <NSObject>
@optional
- (void)applicationDidFinishLaunching:(NSNotification*)notification;
- (void)applicationWillTerminate:(NSNotification*)notification;
- (BOOL)applicationShouldHandleReopen:(NSApplication*)application hasVisibleWindows:(BOOL)flag;
@end

@interface NSApplication (Life)
@property (nullable, weak) id<NSApplicationDelegate> delegate;
- (void)run;
@end

NS_ASSUME_NONNULL_END
