#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "common/settings/HotkeyTable.h"
#include "quillback/dbus/Portal.h"
#include "quillback/ports/KeyWatch.h"
#include "quillback/ports/Loop.h"

namespace voxtrel::quillback {

/// The push-to-talk key as a global shortcut of the desktop's portal. The desktop may ask the user, and
/// the user may choose another trigger there. A portal that goes away and comes back is asked again.
/// Escape is not seen, so nothing is cancelled.
/// Thread: the loop's.  Owns: its connection to the portal.  Borrows: Loop (must outlive this).
/// Fails by: `onHidden` with a reason for people; a held key is released first.
class PortalKey final : public KeyWatch {
 public:
  struct Callbacks {
    Listener key;
    /// The key can be seen from now on. `trigger` is the desktop's text; empty if it has none.
    std::function<void(const std::string& trigger)> onSeen;
    std::function<void(const std::string& why)> onHidden;
  };

  static constexpr const char* kInterface = "org.freedesktop.portal.GlobalShortcuts";

  /// What the desktop is asked for: the key itself if it can be a shortcut, else F8.
  static std::string_view preferredTrigger(const Hotkey& hotkey);
  /// Asked for where the desktop gave no trigger for the first one.
  static constexpr std::string_view kSecondTrigger = "CTRL+ALT+v";

  /// Null if there is no session bus.
  [[nodiscard]] static std::unique_ptr<PortalKey> open(const Hotkey& hotkey, Callbacks callbacks,
                                                       Loop& loop);

 private:
  PortalKey(const Hotkey& hotkey, Callbacks callbacks);

  void subscribe();
  void begin();
  void comeBack();
  void createSession();
  void writeSession(sd_bus_message& call, const std::string& token) const;
  void askForBound();
  void bind();
  void listShortcuts();
  void onCreated(std::uint32_t code, sd_bus_message& results);
  void onBound(std::uint32_t code, sd_bus_message& results);
  void onListed(std::uint32_t code, sd_bus_message& results);
  void onKey(sd_bus_message& signal, bool isDown);
  void onChanged(sd_bus_message& signal);
  void accept(const std::string& trigger);
  void hide(const std::string& why);
  void hold(bool isDown);
  /// Calls a method whose answer is a Response signal, which `then` gets.
  void request(const char* name, const Portal::WriteRequest& write,
               void (PortalKey::*then)(std::uint32_t, sd_bus_message&));
  bool isOfOurSession(sd_bus_message& signal) const;

  Callbacks callbacks_;
  std::string trigger_;
  std::string session_;  // its path; empty while there is none
  bool isHeld_ = false;
  bool isHidden_ = false;  // and that was reported
  std::optional<std::string> boundTrigger_;
  std::unique_ptr<Portal> portal_;
};

}  // namespace voxtrel::quillback
