#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace scripted {

/// One command to the engine.
struct Command {
  std::string name;
  std::string argument;  ///< the rest of the line, escapes not yet replaced
};

/// Reads "NAME ARGUMENT"; an empty name for a blank line or a comment.
Command parseCommand(std::string_view line);

/// The commands of a script, one a line.
std::vector<Command> parseScript(std::string_view text);

/// The options "--NAME [ARGUMENT]..." as commands.
/// Fails by: throwing std::invalid_argument that names the word.
std::vector<Command> parseOptions(const std::vector<std::string>& words);

/// Takes the first word off `text`.
std::string_view takeWord(std::string_view& text);

/// A number with an optional k, M or G (powers of 1000).
/// Fails by: throwing std::invalid_argument.
unsigned long long parseNumber(std::string_view word);

/// Replaces \n \r \t \0 \\ and \xHH by what they stand for.
std::string unescape(std::string_view text);

}  // namespace scripted
