#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "quillback/insertion/paste/PasteQueue.h"
#include "quillback/insertion/portal/FocusedApp.h"
#include "quillback/insertion/portal/RemoteDesktop.h"
#include "quillback/ports/ScreenLock.h"
#include "quillback/settings/EngineSettings.h"

namespace voxtrel::quillback {

/// Pastes texts into the focused window on desktops without virtual keyboards: the portal's remote desktop
/// presses the paste key. The session is opened once; one that ended is opened again with the next text.
/// Thread: the loop's.  Owns: the session.  Borrows: Loop, ScreenLock, the clipboards (must outlive this).
/// Fails by: false from `paste`; for a text that was taken, `onRefused` with the text and the reason.
class PortalPaste {
 public:
  struct Parts {
    /// The compositor's clipboard; null if it has none.
    std::function<PasteClipboard*()> compositorsClipboard;
    /// The key that writes a symbol, which is `usual` in most layouts; both as the kernel's numbers.
    std::function<int(std::uint32_t symbol, int usual)> keyOf;
    /// Where neither the compositor nor the session has one.
    std::function<PasteClipboard&()> lastClipboard;
    ScreenLock& lock;
    std::function<void(const std::string& text, const std::string& why)> onRefused;
    /// The desktop asks the user for the first time.
    std::function<void()> onAsking;
    /// The user has answered the desktop's question with no, just now.
    std::function<void()> onConsentRefused;
  };

  PortalPaste(Loop& loop, Parts parts);
  PortalPaste(const PortalPaste&) = delete;
  PortalPaste& operator=(const PortalPaste&) = delete;

  /// Opens the session, for which the desktop may ask the user.
  void open(EngineSettings::PasteKey key);
  /// False if the text cannot be pasted now.
  [[nodiscard]] bool paste(const std::string& text, PasteQueue::OnEnd onEnd);
  /// Copies by the session's clipboard. False if it has none.
  [[nodiscard]] bool copy(const std::string& text);

 private:
  PasteClipboard* clipboard();
  void pressPasteKey();

  Loop& loop_;
  Parts parts_;
  EngineSettings::PasteKey key_ = EngineSettings::PasteKey::ctrlV;
  FocusedApp focused_;
  PasteQueue queue_;
  std::unique_ptr<RemoteDesktop> desktop_;
  std::unique_ptr<Loop::Timer> openingTimeout_;
};

/// The name of the key in the settings and for people.
std::string_view pasteKeyName(EngineSettings::PasteKey key);

}  // namespace voxtrel::quillback
