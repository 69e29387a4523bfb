// Declarations of AppKit: run loop modes, the application, its menu and its life.
#pragma once

#import <AppKit/AppKit.h>

#import "Foundation.h"

NS_ASSUME_NONNULL_BEGIN

APPKIT_EXTERN NSRunLoopMode NSModalPanelRunLoopMode;
APPKIT_EXTERN NSRunLoopMode NSEventTrackingRunLoopMode;

NS_ASSUME_NONNULL_END
