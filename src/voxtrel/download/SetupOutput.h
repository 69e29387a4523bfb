#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace voxtrel {

/// How far the engine's setup says it is.
/// Thread: any, as a value.
struct SetupProgress {
  std::string downloadedMB;  ///< such as "812.4 MB", the amount as printed
  std::string totalMB;       ///< the same, of the whole
  double fraction = 0.0;     ///< 0 to 1

  bool operator==(const SetupProgress&) const = default;
};

/// The first figures of the form "812.4 MB / 3094.1 MB (26.3%)" anywhere in a line of the setup's
/// output; the blanks may be missing. Nothing where the percentage is no number. Equals a search for
/// ([\d.]+)\s*MB\s*/\s*([\d.]+)\s*MB\s*\(([\d.]+)%\) with Unicode's digits and whitespace.
std::optional<SetupProgress> parseProgress(std::string_view line);

/// Whether a line goes into the log: those that look like progress do not.
bool isLogged(std::string_view line);

}  // namespace voxtrel
