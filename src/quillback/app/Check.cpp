#include "quillback/app/Check.h"

#include <string>

#include "common/base/SessionKind.h"
#include "quillback/app/KeySource.h"

namespace voxtrel::quillback {
namespace {

std::string keyLine(const Hotkey& hotkey, const tl::expected<std::string, std::string>& source) {
  const std::string label(hotkey.label);
  if (source) return "key: yes, " + label + " by " + *source;
  return "key: no, " + label + " cannot be seen: " + source.error();
}

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
  const auto source = findKeySource(session, settings.hotkey);
  output.print(keyLine(settings.hotkey, source));
  output.print(session == SessionKind::x11 ? "session: X11" : "session: Wayland");
  output.print(wordsLine(settings.insert, session));
  return source ? 0 : 1;
}

}  // namespace voxtrel::quillback
