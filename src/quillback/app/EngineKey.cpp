#include "quillback/app/EngineKey.h"

#include <utility>

#include "common/posix/OwnFolder.h"
#include "quillback/audio/TakeFolder.h"
#include "quillback/keys/command/KeyCommands.h"
#include "quillback/settings/StateFile.h"

namespace voxtrel::quillback {

EngineKey::EngineKey(Loop& loop, Output& output, OwnKeys& ownKeys, KeyWatch::Listener listener,
                     Notify notify)
    : loop_(loop),
      output_(output),
      ownKeys_(ownKeys),
      key_(std::move(listener)),
      notify_(std::move(notify)) {}

void EngineKey::watch(SessionKind session, const Hotkey& hotkey) {
  session_ = session;
  hotkey_ = hotkey;
  line_ = keyLine(hotkey_, tl::make_unexpected("the desktop has not answered yet"));
  takeCommands();
  session == SessionKind::wayland ? watchByPortal() : watchDirectly("");
}

void EngineKey::takeCommands() {
  const std::string path = keyCommandPath();
  if (path.empty() || !makeOwnFolder(takeFolderPath())) return;
  commands_ = KeyCommands::open(path, key_.addSource(),
                                {[this] {
                                   if (!direct_ && !portal_) line_ = keyLine(hotkey_, kByCommand);
                                 },
                                 [this] { return line_; }},
                                loop_);
}

void EngineKey::watchByPortal() {
  portal_ = PortalKey::open(
      hotkey_,
      {key_.addSource(), [this](const std::string& trigger) { seenByPortal(trigger); },
       [this](const std::string& why) { hiddenFromPortal(why); }},
      loop_);
  if (!portal_) watchDirectly("there is no session bus; ");
}

void EngineKey::seenByPortal(const std::string& trigger) {
  direct_.reset();
  line_ = portalLine(trigger);
  tellTrigger(trigger);
}

void EngineKey::hiddenFromPortal(const std::string& why) {
  if (!direct_) watchDirectly(why + "; ");
}

void EngineKey::watchDirectly(const std::string& whyNotOtherwise) {
  auto source = openKeySource(session_, hotkey_, key_.addSource(), ownKeys_, loop_,
                              [this] { lose("the X server is gone"); });
  if (!source) return lose(whyNotOtherwise + source.error());
  direct_ = std::move(source->watch);
  line_ = keyLine(hotkey_, std::move(source->name));
}

void EngineKey::lose(const std::string& why) {
  if (isKeyByCommand()) {
    line_ = keyLine(hotkey_, kByCommand);
    return;
  }
  line_ = keyLine(hotkey_, tl::unexpected(why));
  output_.print(noKeySourceLine(hotkey_, session_, why));
}

/// The desktop's trigger may be another key than the one of the settings. It is told once.
void EngineKey::tellTrigger(const std::string& trigger) {
  const StateFile told("told-trigger");
  if (told.read() == trigger) return;
  static_cast<void>(told.write(trigger));  // told again at the next start if that failed
  const std::string text = trigger.empty() ? "Choose the key in the desktop's keyboard settings."
                                           : "Hold " + trigger + " to dictate.";
  output_.print("[quillback] " + text);
  notify_("The desktop watches the key", text);
}

}  // namespace voxtrel::quillback
