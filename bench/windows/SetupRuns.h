#pragma once

#include <string>

namespace bench {

/// Prints 200,000 lines.
int beTheChild();

/// Reads and drops those lines in a bare loop; prints its milliseconds. `self`: this program.
int readBare(const std::string& self);

/// Shows those lines in the download window. Needs a QApplication.
int showWindow();

}  // namespace bench
