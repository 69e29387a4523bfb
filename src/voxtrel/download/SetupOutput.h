#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace voxtrel {

/// The progress that the engine's setup prints.
/// Thread: any, as a value.
struct SetupProgress {
  std::string downloadedMB;  ///< as printed, such as "812.4 MB"
  std::string totalMB;
  double fraction = 0.0;  ///< 0 to 1

  bool operator==(const SetupProgress&) const = default;
};

/// The first progress of the form "812.4 MB / 3094.1 MB (26.3%)" in a line of the setup's output; the
/// spaces are optional. Empty if there is none or its percentage is not a number. Same as a search for
/// ([\d.]+)\s*MB\s*/\s*([\d.]+)\s*MB\s*\(([\d.]+)%\) with Unicode's digits and whitespace.
std::optional<SetupProgress> parseProgress(std::string_view line);

/// Whether a line goes into the log. Lines that look like progress do not.
bool isLogged(std::string_view line);

/// Length in bytes of the decimal digit (Unicode category Nd, version 15) at the start of UTF-8 text; 0
/// if there is none.
std::size_t decimalDigitLength(std::string_view text);

}  // namespace voxtrel
