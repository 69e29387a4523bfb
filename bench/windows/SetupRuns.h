#pragma once

#include <string>

namespace bench {

/// Prints 200,000 lines.
int beTheChild();

/// Reads them in a loop that keeps nothing and prints its milliseconds. `self`: this program.
int readBare(const std::string& self);

/// Shows them in the download window. Needs a QApplication.
int showWindow();

}  // namespace bench
