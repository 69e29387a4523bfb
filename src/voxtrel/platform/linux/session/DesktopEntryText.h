#pragma once

#include <map>
#include <string>
#include <string_view>

namespace voxtrel {

/// A value as desktop entry files write it: backslashes, line ends and leading blanks escaped.
std::string desktopEntryString(std::string_view value);

/// A program as one word of the key `Exec`, quoted where its characters ask for it. The result is
/// a whole value: it is escaped as every value is, on top of the quoting.
std::string desktopEntryCommand(std::string_view program);

/// The keys of the group `[Desktop Entry]` with their values as they stand in the file, blanks
/// around the equals sign left out. Translated keys keep their `[locale]`.
std::map<std::string, std::string> readDesktopEntry(std::string_view text);

/// The value behind the escapes.
std::string desktopEntryValue(std::string_view escaped);

}  // namespace voxtrel
