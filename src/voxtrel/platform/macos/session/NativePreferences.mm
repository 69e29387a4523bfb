#import "voxtrel/platform/macos/session/NativePreferences.h"

#import "voxtrel/platform/macos/foundation/Strings.h"

namespace voxtrel {

bool MainAppLoginItem::isEnabled() const {
  return SMAppService.mainAppService.status == SMAppServiceStatusEnabled;
}

// The service also reports an error where nothing had to change, so the status decides.

bool MainAppLoginItem::enable() {
  [SMAppService.mainAppService registerAndReturnError:nullptr];
  return isEnabled();
}

bool MainAppLoginItem::disable() {
  [SMAppService.mainAppService unregisterAndReturnError:nullptr];
  return !isEnabled();
}

/// Registering does not undo what the user decided in System Settings; the system sees to that.
bool MainAppLoginItem::restore() {
  return enable();
}

bool StandardUserDefaults::boolForKey(std::string_view key) const {
  return [NSUserDefaults.standardUserDefaults boolForKey:toNSString(key)];
}

void StandardUserDefaults::setBool(std::string_view key, bool value) {
  [NSUserDefaults.standardUserDefaults setBool:value forKey:toNSString(key)];
}

}  // namespace voxtrel
