#pragma once

#import <AppKit/AppKit.h>

#include <memory>

#include "voxtrel/forms/SettingsView.h"
#include "voxtrel/platform/macos/windows/FormWindow.h"

/// The settings form's controls, centred in the frame, which may be lower than the form's own height.
/// Thread: the main thread.  Owns: its controls and a share of the form, whose onChange it sets.
@interface VoxtrelSettingsForm : NSView <VoxtrelFormContent>
- (instancetype)initWithFrame:(NSRect)frame form:(std::shared_ptr<voxtrel::SettingsView>)form;
@end
