#include "quillback/app/EngineKey.h"

#include <chrono>
#include <utility>

#include "common/posix/OwnFolder.h"
#include "quillback/audio/TakeFolder.h"
#include "quillback/keys/command/KeyCommands.h"
#include "quillback/keys/evdev/EvdevKeyWatch.h"
#include "quillback/settings/StateFile.h"

namespace voxtrel::quillback {
namespace {

/// An X server makes its socket a moment before it listens.
constexpr std::chrono::milliseconds kRetryAfter{200};
constexpr int kRetries = 10;

}  // namespace

EngineKey::EngineKey(Loop& loop, Output& output, OwnKeys& ownKeys, KeyWatch::Listener listener,
                     Reports reports)
    : loop_(loop),
      output_(output),
      ownKeys_(ownKeys),
      key_(std::move(listener)),
      reports_(std::move(reports)) {}

void EngineKey::watch(SessionKind session, const Hotkey& hotkey) {
  session_ = session;
  hotkey_ = hotkey;
  line_ = keyLine(hotkey_, tl::make_unexpected("the desktop has not answered yet"));
  takeCommands();
  session == SessionKind::wayland ? watchByPortal() : watchDirectly();
}

void EngineKey::takeCommands() {
  const std::string path = keyCommandPath();
  if (path.empty() || !makeOwnFolder(takeFolderPath())) return;
  commands_ = KeyCommands::open(path, key_.addSource(),
                                {[this] {
                                   if (!isSeen_) see(keyLine(hotkey_, kByCommand));
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
  if (!portal_) hiddenFromPortal("there is no session bus");
}

void EngineKey::seenByPortal(const std::string& trigger) {
  direct_.reset();
  see(portalLine(trigger));
  tellTrigger(trigger);
}

void EngineKey::hiddenFromPortal(const std::string& why) {
  whyNoPortal_ = why + "; ";
  if (!direct_) watchDirectly();
}

void EngineKey::watchDirectly() {
  auto source = openKeySource(
      session_, hotkey_, key_.addSource(), ownKeys_, loop_,
      {[this] { see(keyLine(hotkey_, kByKeyboards)); }, [this] { lose("the X server is gone"); }});
  direct_ = source ? std::move(source->watch) : nullptr;
  if (source && source->name) return see(keyLine(hotkey_, source->name));
  lose(whyNoPortal_ + (source ? source->name.error() : source.error()));
}

void EngineKey::see(const std::string& line) {
  line_ = line;
  isSeen_ = true;
  isTold_ = false;
  arrivals_.clear();
  retryTimer_.reset();
  reports_.onSeen();
}

void EngineKey::lose(const std::string& why) {
  if (isKeyByCommand()) return see(keyLine(hotkey_, kByCommand));
  isSeen_ = false;
  line_ = keyLine(hotkey_, tl::unexpected(why));
  awaitSource();
  if (std::exchange(isTold_, true)) return;
  output_.print("[quillback] Accessibility: " + noKeySourceText(hotkey_, session_, why));
  reports_.onMissing(noKeySourceAdvice(hotkey_, session_, why));
}

/// A portal that comes back and a keyboard in a folder that is there report themselves.
void EngineKey::awaitSource() {
  arrivals_.clear();
  const auto await = [this](std::string path) {
    arrivals_.push_back(std::make_unique<PathArrival>(std::move(path), loop_, [this] {
      retriesLeft_ = kRetries;
      retry();
    }));
  };
  const std::string socket = session_ == SessionKind::x11 ? xServerSocket() : "";
  if (!socket.empty()) await(socket);
  if (!direct_) await(std::string(EvdevKeyWatch::kFolder));
}

void EngineKey::retry() {
  if (isSeen_) return;
  watchDirectly();
  if (isSeen_ || retriesLeft_-- <= 0) return;
  retryTimer_ = loop_.after(kRetryAfter, [this] { retry(); });
}

/// The desktop's trigger may be another key than the one of the settings. It is told once.
void EngineKey::tellTrigger(const std::string& trigger) {
  const StateFile told("told-trigger");
  if (told.read() == trigger) return;
  static_cast<void>(told.write(trigger));  // told again at the next start if that failed
  const std::string text = trigger.empty() ? "Choose the key in the desktop's keyboard settings."
                                           : "Push to talk: " + trigger + ".";
  output_.print("[quillback] " + text);
  reports_.notify("The desktop watches the key", text);
}

}  // namespace voxtrel::quillback
