#pragma once

#include <functional>

#include "common/base/SessionKind.h"
#include "quillback/insertion/clipboard/WlCopyClipboard.h"
#include "quillback/insertion/clipboard/X11Clipboard.h"
#include "quillback/insertion/portal/PortalPaste.h"
#include "quillback/insertion/wayland/WaylandInsertion.h"
#include "quillback/keys/OwnKeys.h"
#include "quillback/notifications/Notifier.h"
#include "quillback/ports/ScreenLock.h"
#include "quillback/ports/TextSink.h"
#include "quillback/settings/EngineSettings.h"

namespace voxtrel::quillback {

/// Makes the sink that the settings ask for and the desktop allows. Under Wayland words are typed where the
/// compositor has virtual keyboards, else pasted by the desktop's portal where it lets us, else copied. What
/// cannot be typed or pasted is copied; a line and a notification say why. Words are only printed until there
/// is a desktop. No notification has the words in it, unless the settings ask for that.
/// Thread: the loop's.  Owns: the running desktop programs, the notifier.  Borrows: Loop, OwnKeys,
/// ScreenLock, Output (must outlive this). The sinks borrow this.
/// Fails by: a line of output, and the next best sink.
class TextSinks {
 public:
  /// Puts a text on the clipboard.
  using Copy = std::function<void(const std::string& text)>;

  TextSinks(Loop& loop, OwnKeys& ownKeys, ScreenLock& lock, Output& output);

  [[nodiscard]] std::unique_ptr<TextSink> make(const EngineSettings& settings, SessionKind session);

  /// Shows a notification about anything else, as this does about copies.
  void notify(const std::string& title, const std::string& body) { notifier_.notify(title, body); }

 private:
  /// Null without a desktop.
  std::unique_ptr<TextSink> makeOnDesktop(const EngineSettings& settings, SessionKind session);
  Copy clipboardOf(SessionKind session);
  /// Where neither the compositor nor the portal has one.
  PasteClipboard& lastClipboard();
  void copyRest(const std::string& text, const std::string& why);
  void reportCopiedRest(const std::string& why);
  void reportQuestion();
  void reportRefusedConsent();

  Loop& loop_;
  OwnKeys& ownKeys_;
  ScreenLock& lock_;
  Output& output_;
  DesktopPrograms programs_;
  Notifier notifier_;
  WaylandInsertion wayland_;
  std::unique_ptr<X11Clipboard> xwaylandsClipboard_;  // once there was no other
  WlCopyClipboard wlCopyClipboard_;
  PortalPaste paste_;
};

/// What `make` would use, for people. `hasRemoteDesktop` asks the desktop's portal.
std::string describeInsertion(const EngineSettings& settings, SessionKind session, Loop& loop,
                              const std::function<bool()>& hasRemoteDesktop);

}  // namespace voxtrel::quillback
