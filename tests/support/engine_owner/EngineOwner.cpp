// engine-owner ENGINE: starts ENGINE, passes on what it prints, and waits to be killed.
#include <unistd.h>

#include <cstdio>

#include "voxtrel/platform/posix/PosixChildProcessLauncher.h"

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  voxtrel::ChildOptions options;
  options.executable = argv[1];
  options.arguments = {"run", "--ignore-term", "--report"};
  options.onOutput = [](std::string_view bytes) {
    std::fwrite(bytes.data(), 1, bytes.size(), stdout);
    std::fflush(stdout);
  };
  voxtrel::PosixChildProcessLauncher launcher;
  const auto result = launcher.start(std::move(options));
  if (!result) {
    std::fprintf(stderr, "%s\n", result.error().c_str());
    return 1;
  }
  for (;;) ::pause();
}
