#pragma once

#include <map>
#include <string>
#include <string_view>

namespace voxtrel {

/// `value` as written in desktop entry files: backslashes, line ends and leading blanks are escaped.
std::string desktopEntryString(std::string_view value);

/// The value of `Exec` that starts `program` without arguments: quoted if its characters require it,
/// then escaped like every value.
std::string desktopEntryCommand(std::string_view program);

/// The keys of the group `[Desktop Entry]` with their values, still escaped, without the blanks around
/// the equals sign. Translated keys keep their `[locale]`.
std::map<std::string, std::string> readDesktopEntry(std::string_view text);

/// Undoes the escaping of a value.
std::string desktopEntryValue(std::string_view escaped);

}  // namespace voxtrel
