#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "quillback/app/KeySource.h"
#include "quillback/keys/SharedKey.h"
#include "quillback/keys/portal/PortalKey.h"
#include "quillback/loop/PathArrival.h"
#include "quillback/ports/Output.h"

namespace voxtrel::quillback {

/// The push-to-talk key of the running engine, by the best source that works here: X11's events; under
/// Wayland the desktop's portal, else the keyboards in /dev/input; always also the command
/// `quillback key`. Without a source it waits for one: the X server's socket, a keyboard, the portal.
/// Thread: the loop's.  Owns: the sources.  Borrows: Loop, Output, OwnKeys (must outlive this).
/// Fails by: one line of output, and `onMissing`, each time that no source is left.
class EngineKey {
 public:
  struct Reports {
    std::function<void()> onSeen;                            ///< the key can be seen from now on
    std::function<void(const std::string& text)> onMissing;  ///< why not and what to do, for people
    /// Shows a notification about anything else.
    std::function<void(const std::string& title, const std::string& body)> notify;
  };

  EngineKey(Loop& loop, Output& output, OwnKeys& ownKeys, KeyWatch::Listener listener,
            Reports reports);
  EngineKey(const EngineKey&) = delete;
  EngineKey& operator=(const EngineKey&) = delete;

  void watch(SessionKind session, const Hotkey& hotkey);

 private:
  void watchByPortal();
  void watchDirectly();
  void seenByPortal(const std::string& trigger);
  void hiddenFromPortal(const std::string& why);
  void see(const std::string& line);
  void lose(const std::string& why);
  void awaitSource();
  void retry();
  void takeCommands();
  void tellTrigger(const std::string& trigger);

  Loop& loop_;
  Output& output_;
  OwnKeys& ownKeys_;
  SharedKey key_;
  Reports reports_;
  SessionKind session_ = SessionKind::x11;
  Hotkey hotkey_ = kDefaultHotkey;
  bool isSeen_ = false;
  bool isTold_ = false;      // that it is not seen
  std::string whyNoPortal_;  // with a separator after it
  std::string line_;         // as `quillback check` prints it
  int retriesLeft_ = 0;
  std::vector<std::unique_ptr<PathArrival>> arrivals_;  // while it is not seen
  std::unique_ptr<Loop::Timer> retryTimer_;
  std::unique_ptr<KeyWatch> commands_;
  std::unique_ptr<KeyWatch> direct_;
  std::unique_ptr<PortalKey> portal_;
};

}  // namespace voxtrel::quillback
