#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <new>
#include <span>
#include <string>
#include <string_view>

#include "quillback/app/CommandLine.h"
#include "quillback/app/Commands.h"

using namespace voxtrel::quillback;

namespace {

/// Opens /dev/null for each standard descriptor that is closed. Otherwise the next opened file
/// would take its number and get what is meant for it.
void openStandardDescriptors() {
  for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    // `open` returns the lowest free number, which is this one.
    if (::fcntl(fd, F_GETFD) < 0) ::open("/dev/null", O_RDWR);
  }
}

/// Ends the process with one line. Nothing may be allocated here.
[[noreturn]] void endWithoutMemory() {
  constexpr std::string_view kLine = "quillback: there is not enough memory.\n";
  [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, kLine.data(), kLine.size());
  ::_exit(kNoMemoryExit);
}

}  // namespace

int main(int argumentCount, char** arguments) {
  openStandardDescriptors();
  const std::span words(arguments, static_cast<std::size_t>(argumentCount));
  const auto line = parseCommandLine(words.subspan(words.empty() ? 0 : 1));
  if (!line) {
    std::fprintf(stderr, "quillback: %s\nTry \"quillback --help\".\n", line.error().c_str());
    return 2;
  }
  // In the recogniser's process a library may help itself; if not, the engine starts another one.
  if (line->command != CommandLine::Command::recognise) std::set_new_handler(endWithoutMemory);
  return runCommand(*line);
}
