#pragma once

#include <functional>
#include <memory>
#include <string>

#include "quillback/app/KeySource.h"
#include "quillback/keys/SharedKey.h"
#include "quillback/keys/portal/PortalKey.h"
#include "quillback/ports/Output.h"

namespace voxtrel::quillback {

/// The push-to-talk key of the running engine, by the best source that works here: X11's events; under
/// Wayland the desktop's portal, else the keyboards in /dev/input; always also the command
/// `quillback key`. A portal that comes back is used again.
/// Thread: the loop's.  Owns: the sources.  Borrows: Loop, Output, OwnKeys (must outlive this).
/// Fails by: one line of output each time that no source is left.
class EngineKey {
 public:
  using Notify = std::function<void(const std::string& title, const std::string& body)>;

  EngineKey(Loop& loop, Output& output, OwnKeys& ownKeys, KeyWatch::Listener listener,
            Notify notify);
  EngineKey(const EngineKey&) = delete;
  EngineKey& operator=(const EngineKey&) = delete;

  void watch(SessionKind session, const Hotkey& hotkey);

 private:
  void watchByPortal();
  void watchDirectly(const std::string& whyNotOtherwise);
  void seenByPortal(const std::string& trigger);
  void hiddenFromPortal(const std::string& why);
  void lose(const std::string& why);
  void takeCommands();
  void tellTrigger(const std::string& trigger);

  Loop& loop_;
  Output& output_;
  OwnKeys& ownKeys_;
  SharedKey key_;
  Notify notify_;
  SessionKind session_ = SessionKind::x11;
  Hotkey hotkey_ = kDefaultHotkey;
  std::string line_;  // as `quillback check` prints it
  std::unique_ptr<KeyWatch> commands_;
  std::unique_ptr<KeyWatch> direct_;
  std::unique_ptr<PortalKey> portal_;
};

}  // namespace voxtrel::quillback
