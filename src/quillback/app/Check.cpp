#include "quillback/app/Check.h"

#include <string>

#include "common/base/SessionKind.h"
#include "quillback/app/KeySource.h"
#include "quillback/insertion/TextSinks.h"
#include "quillback/keys/command/KeyCommands.h"
#include "quillback/loop/EpollLoop.h"

namespace voxtrel::quillback {

int printCheck(const EngineSettings& settings, Output& output) {
  const SessionKind session = currentSessionKind(SessionKind::x11);
  // A running engine knows more, such as the key that the desktop has chosen.
  const auto told = sendKeyCommand(keyCommandPath(), kKeyStatus);
  const std::string line =
      told ? *told : keyLine(settings.hotkey, findKeySource(session, settings.hotkey));
  output.print(line);
  output.print(session == SessionKind::x11 ? "session: X11" : "session: Wayland");
  EpollLoop loop;
  output.print("words: " + describeInsertion(settings, session, loop,
                                             [] { return portalHas(RemoteDesktop::kInterface); }));
  return line.starts_with(kKeyIsSeen) ? 0 : 1;
}

}  // namespace voxtrel::quillback
