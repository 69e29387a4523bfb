#import "support/macos/whole/RunningProgram.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <csignal>
#include <fstream>
#include <sstream>

#include "support/macos/RunLoop.h"

extern char** environ;

namespace voxtrel::testing {
namespace {

namespace fs = std::filesystem;

constexpr std::array<std::string_view, 3> kDaemonsOfRig = {"gdnc", "gpbs", "gdomap"};
constexpr const char* kInformation = "{ CFBundleIdentifier = \"org.voxtrel.Voxtrel\"; }";

std::string contentOf(const fs::path& path) {
  const std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

std::vector<char*> pointersTo(std::vector<std::string>& words) {
  std::vector<char*> pointers;
  for (std::string& word : words) pointers.push_back(word.data());
  pointers.push_back(nullptr);
  return pointers;
}

std::string nameOf(const std::string& variable) {
  return variable.substr(0, variable.find('=') + 1);
}

std::string homeVariable(const EngineFolder& files) {
  return "HOME=" + files.home().path().string();
}

/// Whether one of the zero-terminated `variables` is `variable`.
bool holds(const std::string& variables, const std::string& variable) {
  return ('\0' + variables).find('\0' + variable + '\0') != std::string::npos;
}

}  // namespace

RunningProgram::RunningProgram() {
  const fs::path folder = files_.path();
  fs::copy_file(MACOS_VOXTREL, folder / "Voxtrel");
  fs::create_directory(folder / "Resources");
  std::ofstream(folder / "Resources/Info-gnustep.plist") << kInformation;
}

RunningProgram::~RunningProgram() {
  if (pid_ == 0) return;
  signal(SIGKILL);
  end();
}

std::vector<std::string> RunningProgram::wholeEnvironment(
    const std::vector<std::string>& added) const {
  std::vector<std::string> variables = added;
  variables.push_back(homeVariable(files_));
  variables.push_back("VOXTREL_USER_CHOOSES=" + (files_.path() / "choice").string());
  const std::vector<std::string> own = variables;
  for (char** each = environ; *each != nullptr; ++each) {
    const std::string variable = *each;
    const bool isSet = std::any_of(own.begin(), own.end(), [&](const std::string& other) {
      return nameOf(other) == nameOf(variable);
    });
    if (!isSet) variables.push_back(variable);
  }
  return variables;
}

void RunningProgram::start(const std::vector<std::string>& environment,
                           const std::vector<std::string>& arguments) {
  std::vector<std::string> variables = wholeEnvironment(environment);
  std::vector<std::string> words = {(files_.path() / "Voxtrel").string()};
  words.insert(words.end(), arguments.begin(), arguments.end());
  const std::string output = (files_.path() / "output").string();
  posix_spawn_file_actions_t actions;
  ::posix_spawn_file_actions_init(&actions);
  ::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output.c_str(),
                                     O_WRONLY | O_CREAT | O_APPEND, S_IRUSR | S_IWUSR);
  ::posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
  ::posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);
  const int error = ::posix_spawn(&pid_, words[0].c_str(), &actions, nullptr,
                                  pointersTo(words).data(), pointersTo(variables).data());
  ::posix_spawn_file_actions_destroy(&actions);
  ASSERT_EQ(error, 0);
}

void RunningProgram::signal(int number) const {
  ::kill(pid_, number);
}

void RunningProgram::choose(const std::string& row) const {
  const fs::path choice = files_.path() / "choice";
  std::ofstream(choice.string() + ".part") << row;
  fs::rename(choice.string() + ".part", choice);
}

std::optional<int> RunningProgram::end(std::chrono::milliseconds limit) {
  int status = 0;
  if (!runUntil([&] { return ::waitpid(pid_, &status, WNOHANG) == pid_; }, limit)) return {};
  pid_ = 0;
  return WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status);
}

std::string RunningProgram::said() const {
  return contentOf(files_.path() / "output");
}

std::vector<pid_t> RunningProgram::family() const {
  std::vector<pid_t> found;
  for (const auto& entry : fs::directory_iterator("/proc")) {
    const std::string name = entry.path().filename().string();
    pid_t id = 0;
    std::from_chars(name.data(), name.data() + name.size(), id);
    if (id == 0 || !holds(contentOf(entry.path() / "environ"), homeVariable(files_))) continue;
    std::string program = contentOf(entry.path() / "comm");
    program.erase(program.find_last_not_of('\n') + 1);
    const bool isRigs =
        std::find(kDaemonsOfRig.begin(), kDaemonsOfRig.end(), program) != kDaemonsOfRig.end();
    if (!isRigs) found.push_back(id);
  }
  return found;
}

}  // namespace voxtrel::testing
