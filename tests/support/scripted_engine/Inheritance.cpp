#include "support/scripted_engine/Inheritance.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace scripted {
namespace {

std::vector<int> openDescriptors() {
  std::vector<int> descriptors;
  DIR* const folder = ::opendir("/dev/fd");
  if (folder == nullptr) return descriptors;
  while (const dirent* entry = ::readdir(folder)) {
    if (entry->d_name[0] == '.') continue;
    const int descriptor = std::atoi(entry->d_name);
    if (descriptor != ::dirfd(folder)) descriptors.push_back(descriptor);
  }
  ::closedir(folder);
  std::sort(descriptors.begin(), descriptors.end());
  return descriptors;
}

void takeSignals(Inheritance& inheritance) {
  sigset_t mask;
  ::sigprocmask(SIG_SETMASK, nullptr, &mask);
  for (int signal = 1; signal < NSIG; ++signal) {
    struct sigaction action {};
    if (::sigaction(signal, nullptr, &action) != 0) continue;
    if (sigismember(&mask, signal) == 1) inheritance.blocked.push_back(signal);
    if (action.sa_handler == SIG_IGN) inheritance.ignored.push_back(signal);
    if (action.sa_handler != SIG_IGN && action.sa_handler != SIG_DFL) {
      inheritance.caught.push_back(signal);
    }
  }
}

std::string pathOfStandardInput() {
#if defined(__APPLE__)
  std::array<char, PATH_MAX> path{};
  return ::fcntl(STDIN_FILENO, F_GETPATH, path.data()) == 0 ? path.data() : "";
#else
  std::error_code error;
  return std::filesystem::read_symlink("/proc/self/fd/0", error).string();
#endif
}

std::string join(const std::vector<int>& numbers) {
  std::string text;
  for (const int number : numbers) {
    if (!text.empty()) text += ' ';
    text += std::to_string(number);
  }
  return text.empty() ? "none" : text;
}

}  // namespace

Inheritance takeInheritance(int argc, char** argv) {
  Inheritance inheritance;
  inheritance.descriptors = openDescriptors();
  takeSignals(inheritance);
  inheritance.arguments.assign(argv, argv + argc);
  std::error_code error;
  inheritance.workingDirectory = std::filesystem::current_path(error).string();
  inheritance.standardInput = pathOfStandardInput();
  return inheritance;
}

std::string describe(const Inheritance& inheritance) {
  std::string text = "pid: " + std::to_string(::getpid()) + '\n';
  text += "parent: " + std::to_string(::getppid()) + '\n';
  for (const std::string& argument : inheritance.arguments) text += "argument: " + argument + '\n';
  text += "directory: " + inheritance.workingDirectory + '\n';
  text += "stdin: " + inheritance.standardInput + '\n';
  text += "descriptors: " + join(inheritance.descriptors) + '\n';
  text += "blocked: " + join(inheritance.blocked) + '\n';
  text += "ignored: " + join(inheritance.ignored) + '\n';
  text += "caught: " + join(inheritance.caught) + '\n';
  return text;
}

}  // namespace scripted
