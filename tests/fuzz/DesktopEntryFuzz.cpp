// Any bytes as a desktop entry and as one of its values: what is written is read back.

#include <string>

#include "fuzz/FuzzEntry.h"
#include "voxtrel/platform/linux/session/DesktopEntryText.h"

using namespace voxtrel;

namespace {

constexpr const char* kBlanks = " \t\r\n";

/// Readers drop blanks at the end of a line.
std::string withoutBlanksAtEnd(const std::string& text) {
  return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

void requireRoundTrip(const std::string& escaped, const std::string& value) {
  require(escaped.find('\n') == std::string::npos, "a value is one line");
  const auto entry = readDesktopEntry("[Desktop Entry]\nExec=" + escaped + "\nType=x\n");
  require(entry.size() == 2 && entry.at("Type") == "x", "a value adds no key");
  require(desktopEntryValue(entry.at("Exec")) == value, "a value is read back");
}

void requireFromText(const std::string& text) {
  for (const auto& [key, value] : readDesktopEntry(text)) {
    require(text.find(key) != std::string::npos, "a key stands in the text");
    require(text.find(value) != std::string::npos, "a value stands in the text");
    require(desktopEntryValue(value).size() <= value.size(), "escapes only get shorter");
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(data, data + size);
  requireFromText(text);
  requireFromText("[Desktop Entry]\n" + text);
  const std::string value = withoutBlanksAtEnd(text);
  requireRoundTrip(desktopEntryString(value), value);
  return 0;
}
