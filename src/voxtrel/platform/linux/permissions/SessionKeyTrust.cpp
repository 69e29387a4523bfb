#include "voxtrel/platform/linux/permissions/SessionKeyTrust.h"

#include <memory>
#include <utility>

#include "voxtrel/platform/linux/permissions/KeyHidden.h"
#include "voxtrel/platform/linux/x11/XServer.h"

namespace voxtrel {

SessionKeyTrust::Sources SessionKeyTrust::sourcesOfThisSession(
    std::function<std::string()> engine) {
  const auto check = std::make_shared<EngineCheck>(std::move(engine));
  return {.session = currentSessionKind(SessionKind::wayland),
          .desktops = qEnvironmentVariable("XDG_CURRENT_DESKTOP").toStdString(),
          .offersXInput2 = [] { return voxtrel::offersXInput2(); },
          .askEngine = [check](auto onReply) { check->ask(std::move(onReply)); }};
}

SessionKeyTrust::SessionKeyTrust(Sources sources, Notifications& notifications)
    : notifications_(notifications), sources_(std::move(sources)) {}

bool SessionKeyTrust::isTrusted(bool prompt) {
  if (prompt && prompt_ == Prompt::none) prompt_ = Prompt::due;
  return sources_.session == SessionKind::x11 ? askX() : askEngine();
}

bool SessionKeyTrust::askX() {
  const bool isSeen = sources_.offersXInput2();
  settlePrompt({.isSeen = isSeen, .reason = {}});
  return isSeen;
}

bool SessionKeyTrust::askEngine() {
  if (std::exchange(isNews_, false)) return true;
  if (!std::exchange(isEngineAsked_, true)) {
    sources_.askEngine([this](const KeyAnswer& answer) { onEngineReply(answer); });
    isNews_ = false;  // a reply at once is returned right here
  }
  return isSeen_;
}

void SessionKeyTrust::onEngineReply(const KeyAnswer& answer) {
  isEngineAsked_ = false;
  isSeen_ = answer.isSeen;
  isNews_ = isSeen_;
  settlePrompt(answer);
}

void SessionKeyTrust::settlePrompt(const KeyAnswer& answer) {
  if (prompt_ != Prompt::due) return;
  prompt_ = answer.isSeen ? Prompt::none : Prompt::posted;
  if (answer.isSeen) return;
  notifications_.post(
      keyHiddenNotification(sources_.session, desktopFamily(sources_.desktops), answer.reason));
}

}  // namespace voxtrel
