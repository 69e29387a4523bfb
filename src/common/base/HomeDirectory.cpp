#include "common/base/HomeDirectory.h"

#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <vector>

namespace voxtrel {
namespace {

std::string homeInUserDatabase() {
  std::vector<char> buffer(1024);
  passwd entry{};
  passwd* found = nullptr;
  while (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) == ERANGE) {
    buffer.resize(buffer.size() * 2);
  }
  return found != nullptr && entry.pw_dir != nullptr ? entry.pw_dir : "";
}

}  // namespace

std::string homeDirectory() {
  const char* variable = std::getenv("HOME");
  const bool isAbsolute = variable != nullptr && variable[0] == '/';
  std::string home = isAbsolute ? variable : homeInUserDatabase();
  while (home.ends_with('/')) home.pop_back();
  return home;
}

}  // namespace voxtrel
