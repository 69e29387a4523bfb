#pragma once

#include <string>
#include <vector>

namespace scripted {

/// What the process got from its parent, recorded before it changes anything.
struct Inheritance {
  std::vector<std::string> arguments;  ///< the program's own name first
  std::string workingDirectory;
  std::string standardInput;     ///< what it is
  std::vector<int> descriptors;  ///< open ones
  std::vector<int> blocked;      ///< signals
  std::vector<int> ignored;
  std::vector<int> caught;
};

Inheritance takeInheritance(int argc, char** argv);

/// One "key: value" a line.
std::string describe(const Inheritance& inheritance);

}  // namespace scripted
