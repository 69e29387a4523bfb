#include "quillback/app/Home.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>

namespace voxtrel::quillback {

std::string homeFolder() {
  std::string home;
  if (const char* named = std::getenv("HOME"); named != nullptr && *named == '/') {
    home = named;
  } else if (const passwd* user = ::getpwuid(::getuid())) {
    home = user->pw_dir;
  }
  while (home.ends_with('/')) home.pop_back();
  return home;
}

}  // namespace voxtrel::quillback
