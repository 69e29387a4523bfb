#include "quillback/app/Check.h"

#include <string>

#include "common/base/SessionKind.h"
#include "quillback/app/KeySource.h"
#include "quillback/keys/command/KeyCommands.h"

namespace voxtrel::quillback {
namespace {

std::string wordsLine(EngineSettings::Insert insert, SessionKind session) {
  using enum EngineSettings::Insert;
  if (insert == none) return "words: only printed, as the settings say";
  if (insert == clipboard) return "words: copied, as the settings say";
  return session == SessionKind::x11 ? "words: typed into the focused window"
                                     : "words: copied with wl-copy";
}

}  // namespace

int printCheck(const EngineSettings& settings, Output& output) {
  const SessionKind session = currentSessionKind(SessionKind::x11);
  // A running engine knows more, such as the key that the desktop has chosen.
  const auto told = sendKeyCommand(keyCommandPath(), kKeyStatus);
  const std::string line =
      told ? *told : keyLine(settings.hotkey, findKeySource(session, settings.hotkey));
  output.print(line);
  output.print(session == SessionKind::x11 ? "session: X11" : "session: Wayland");
  output.print(wordsLine(settings.insert, session));
  return line.starts_with(kKeyIsSeen) ? 0 : 1;
}

}  // namespace voxtrel::quillback
