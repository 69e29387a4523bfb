// Any bytes as a settings file: one line is set, every other byte stays, and a second time changes
// nothing.

#include <string>
#include <string_view>

#include "common/base/Utf8.h"
#include "common/settings/SettingsReader.h"
#include "common/settings/SettingsWriter.h"
#include "fuzz/FuzzEntry.h"

using namespace voxtrel;

namespace {

constexpr std::string_view kLine = "language = \"zz\"";

/// `updated` is `before` with one line exchanged, one more, or a section more at the end.
void requireOneChange(const std::string& before, const std::string& updated) {
  if (updated.starts_with(before) && updated.size() > before.size()) {
    const std::string added = updated.substr(before.size());
    if (added == "\n[model]\n" + std::string(kLine)) return;
    if (added == "\n\n[model]\n" + std::string(kLine)) return;
  }
  std::size_t at = updated.find(kLine);
  for (; at != std::string::npos; at = updated.find(kLine, at + 1)) {
    const std::string_view head = std::string_view(updated).substr(0, at);
    const std::string_view tail = std::string_view(updated).substr(at + kLine.size());
    const bool isWholeLine = head.ends_with('\n') && (tail.empty() || tail.starts_with('\n'));
    if (!isWholeLine || !before.starts_with(head.substr(0, head.size() - 1))) continue;
    if (!before.ends_with(tail)) continue;
    if (before.size() == head.size() - 1 + tail.size()) return;  // inserted after a line
    if (before.size() < head.size() + tail.size() || !before.starts_with(head)) continue;
    const std::string old = before.substr(head.size(), before.size() - head.size() - tail.size());
    if (old.find('\n') == std::string::npos && old.find("language") != std::string::npos) return;
  }
  require(false, "one line changes");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(data, data + size);
  const std::string updated = updateOrInsert(text, "model", "language", "\"zz\"");
  requireOneChange(text, updated);
  require(updateOrInsert(updated, "model", "language", "\"zz\"") == updated,
          "setting a line again changes nothing");

  const ModelSettings settings{"yue", true, "shift+\\", "large-v3"};
  const std::string written = withSettings(text, settings);
  require(withSettings(written, settings) == written, "saving again changes nothing");
  require(isValidUtf8(written) || !isValidUtf8(text), "a UTF-8 file stays one");
  if (text.find('=') == std::string::npos) {
    require(parseSettings(written) == settings, "what was saved is read where nothing contradicts");
  }
  return 0;
}
