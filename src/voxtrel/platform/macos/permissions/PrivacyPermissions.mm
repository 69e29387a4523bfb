#include "voxtrel/platform/macos/permissions/PrivacyPermissions.h"

#import <AVFoundation/AVFoundation.h>
#import <AppKit/AppKit.h>
#import <ApplicationServices/ApplicationServices.h>

#include <utility>

namespace voxtrel {
namespace {

NSString* addressOf(PrivacyPane pane) {
  switch (pane) {
    case PrivacyPane::microphone:
      return @"x-apple.systempreferences:com.apple.preference.security?Privacy_Microphone";
    case PrivacyPane::accessibility:
      return @"x-apple.systempreferences:com.apple.preference.security?Privacy_Accessibility";
  }
  return nil;
}

}  // namespace

bool ProcessTrust::isTrusted(bool prompt) {
  if (!prompt) return AXIsProcessTrusted();
  NSDictionary* const options = @{(__bridge NSString*)kAXTrustedCheckOptionPrompt : @YES};
  return AXIsProcessTrustedWithOptions((__bridge CFDictionaryRef)options);
}

void CaptureAccess::request(std::function<void(bool granted)> answer) {
  const auto onAnswer = std::move(answer);
  [AVCaptureDevice requestAccessForMediaType:AVMediaTypeAudio
                           completionHandler:^(BOOL granted) {
                             onAnswer(granted);
                           }];
}

void SettingsPanes::open(PrivacyPane pane) {
  NSURL* const address = [NSURL URLWithString:addressOf(pane)];
  if (address != nil) [NSWorkspace.sharedWorkspace openURL:address];
}

}  // namespace voxtrel
