#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <span>
#include <string>

#include "quillback/insertion/portal/PortalClipboard.h"
#include "quillback/settings/StateFile.h"

namespace voxtrel::quillback {

/// A session of the portal's remote desktop, in which keys can be pressed. The desktop asks the user; newer
/// ones give a token with which they do not ask again. A refusal is remembered until it is forgotten.
/// Thread: the loop's.  Owns: its connection to the portal, the token's file.
/// Borrows: Loop (must outlive this).
/// Fails by: `onLost` with a reason for people. A portal that comes back is asked again.
class RemoteDesktop {
 public:
  struct Callbacks {
    std::function<void()> onReady;
    std::function<void(const std::string& why)> onLost;
    /// The desktop asks the user, for the first time. GNOME's question names no program.
    std::function<void()> onAsking;
    /// The user said no; after `onLost`.
    std::function<void()> onRefused;
  };
  static constexpr const char* kInterface = "org.freedesktop.portal.RemoteDesktop";

  /// Whether the user has refused and that was not forgotten.
  static bool isRefused();
  /// After this the desktop may ask again.
  static void forgetRefusal();

  /// `wantsClipboard`: the session shall have the clipboard, where the portal offers it.
  RemoteDesktop(Loop& loop, bool wantsClipboard, Callbacks callbacks);
  RemoteDesktop(const RemoteDesktop&) = delete;
  RemoteDesktop& operator=(const RemoteDesktop&) = delete;

  /// Opens the session, unless that is done already, was refused, or the portal cannot do it.
  void open();
  bool isReady() const { return state_ == State::ready; }
  /// It is being opened, and the user is not asked for that.
  bool isOpeningQuietly() const { return state_ == State::opening && token_.exists(); }

  /// Presses keys in this order, as numbers of the kernel's, and releases them. Only while `isReady`.
  void press(std::span<const int> keys);
  /// Null if the session has none.
  PasteClipboard* clipboard() { return isReady() && hasClipboard_ ? clipboard_.get() : nullptr; }

 private:
  enum class State { closed, opening, ready };
  struct KeyEvent {
    int key;
    bool isDown;
  };

  void comeBack();
  void createSession();
  void onCreated(std::uint32_t code, sd_bus_message& results);
  void selectDevices();
  void askForClipboard();
  void start();
  void tellQuestion();
  void onStarted(std::uint32_t code, sd_bus_message& results);
  void lose(const std::string& why);
  void refuse();
  void sendKey();

  Loop& loop_;
  const bool wantsClipboard_;
  Callbacks callbacks_;
  StateFile token_{"paste-token"};
  State state_ = State::closed;
  bool isMissing_ = false;  // the portal cannot do it
  bool hasClipboard_ = false;
  std::uint32_t version_ = 0;
  int sessions_ = 0;
  std::string session_;        // its path; empty while there is none
  std::deque<KeyEvent> keys_;  // the first one is being sent
  std::unique_ptr<Loop::Timer> question_;
  std::unique_ptr<Portal> portal_;
  std::unique_ptr<PortalClipboard> clipboard_;
};

}  // namespace voxtrel::quillback
