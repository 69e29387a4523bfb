#include "voxtrel/platform/macos/windows/AppKitAlerts.h"

#import <AppKit/AppKit.h>

#include "voxtrel/platform/macos/foundation/Strings.h"

namespace voxtrel {
namespace {

NSAlert* makeAlert(const Alert& alert) {
  auto* const box = [[NSAlert alloc] init];
  box.alertStyle = NSAlertStyleWarning;
  box.messageText = toNSString(alert.messageText);
  box.informativeText = toNSString(alert.informativeText);
  for (const std::string& title : alert.buttons) [box addButtonWithTitle:toNSString(title)];
  // AppKit gives Return to the first button, but Escape only to one named Cancel.
  NSButton* const last = box.buttons.lastObject;
  if (alert.buttons.size() > 1) last.keyEquivalent = @"\x1b";
  return box;
}

}  // namespace

void AppKitAlerts::runModal(const Alert& alert, std::function<void(std::size_t button)> onAnswer) {
  NSAlert* const box = makeAlert(alert);
  [NSApp activateIgnoringOtherApps:YES];  // an agent's alert would stay behind other windows
  const NSModalResponse response = [box runModal];
  // Any other response means that the application ended the alert.
  if (response < NSAlertFirstButtonReturn) return;
  onAnswer(static_cast<std::size_t>(response - NSAlertFirstButtonReturn));
}

}  // namespace voxtrel
