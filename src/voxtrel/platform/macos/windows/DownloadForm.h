#pragma once

#import <AppKit/AppKit.h>

#include <memory>

#include "voxtrel/download/ModelDownloadView.h"
#include "voxtrel/platform/macos/windows/FormWindow.h"

/// The download form's controls, centred in the frame. They follow the form at most once a frame.
/// Thread: the main thread.  Owns: its controls and a share of the form, whose onChange it sets.
@interface VoxtrelDownloadForm : NSView <VoxtrelFormContent>
- (instancetype)initWithFrame:(NSRect)frame form:(std::shared_ptr<voxtrel::ModelDownloadView>)form;
@end
