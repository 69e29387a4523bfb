#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

#include "support/scripted_engine/ControlSocket.h"
#include "support/scripted_engine/Engine.h"
#include "support/scripted_engine/Help.h"

namespace scripted {
namespace {

/// What the engine does in setup mode without a script.
constexpr const char* kSetupScript =
    "print Downloading whisper-large-v3\n"
    "progress 0 3094\nsleep 50\nprogress 812 3094\nsleep 50\nprogress 1547 3094\nsleep 50\n"
    "progress 2320 3094\nsleep 50\nprogress 3094 3094\nprint \\nVerifying\nprint Saved\nexit 0\n";

/// The files that steer this engine begin with this; a link is not followed, so that each name of
/// the program can have its own files.
std::string filePrefix(const char* ownName, const std::string& mode) {
  const bool isPath = std::strchr(ownName, '/') != nullptr;
  const std::filesystem::path path =
      isPath ? std::filesystem::absolute(ownName) : std::filesystem::read_symlink("/proc/self/exe");
  return path.string() + (mode == "run" ? "" : "." + mode);
}

std::optional<std::string> readFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) return {};
  return std::string(std::istreambuf_iterator<char>(file), {});
}

/// Options on the command line come instead of a script and of a control socket.
std::vector<Command> commandsFor(const std::vector<std::string>& options, const std::string& prefix,
                                 bool isSetup) {
  if (!options.empty()) return parseOptions(options);
  if (const auto script = readFile(prefix + ".script")) return parseScript(*script);
  return parseScript(isSetup ? kSetupScript : "");
}

std::string answer(Engine& engine, const std::string& line) {
  try {
    const Command command = parseCommand(line);
    if (!command.name.empty()) engine.perform(command);
    return "ok " + std::to_string(::getpid());
  } catch (const std::exception& error) {
    return std::string("error ") + error.what();
  }
}

[[noreturn]] void play(const Inheritance& inheritance, std::size_t ownWords) {
  const auto& words = inheritance.arguments;
  const bool isSetup = words[1] == "setup";
  const std::vector<std::string> options(words.begin() + static_cast<long>(ownWords), words.end());
  const std::string prefix = filePrefix(words[0].c_str(), words[1]);
  const EngineLog log(prefix + ".log");
  log.note("start");
  Engine engine(inheritance, log);
  const auto reply = [&engine](const std::string& line) { return answer(engine, line); };
  if (options.empty() && !ControlSocket::listen(prefix + ".control", reply)) {
    log.write(std::string("no control socket: ") + std::strerror(errno));
  }
  for (const Command& command : commandsFor(options, prefix, isSetup)) engine.perform(command);
  engine.perform({"wait", ""});
  ::_exit(0);
}

/// "tell ENGINE COMMAND...": for shell scripts.
int tell(const std::vector<std::string>& words) {
  std::string line;
  for (std::size_t i = 3; i < words.size(); ++i) line.append(i > 3 ? " " : "").append(words[i]);
  const std::string answer = ControlSocket::ask(words[2] + ".control", line);
  std::puts(answer.c_str());
  return answer.starts_with("error") ? 1 : 0;
}

int run(const Inheritance& inheritance) {
  const auto& words = inheritance.arguments;
  const std::string mode = words.size() > 1 ? words[1] : "";
  if (mode == "run") play(inheritance, 2);
  // Without a script of its own, an engine does not know this question.
  const bool isAsked = mode == "check" && words.size() == 2;
  if (isAsked && readFile(filePrefix(words[0].c_str(), mode) + ".script")) play(inheritance, 2);
  const bool hasModel = words.size() >= 4 && words[2] == "--model" && words[3] == "large-v3";
  if (mode == "setup" && hasModel) play(inheritance, 4);
  if (mode == "tell" && words.size() > 3) return tell(words);
  std::fputs(kHelp, mode == "--help" ? stdout : stderr);
  return mode == "--help" ? 0 : 2;
}

}  // namespace
}  // namespace scripted

int main(int argc, char** argv) {
  const scripted::Inheritance inheritance = scripted::takeInheritance(argc, argv);
  try {
    return scripted::run(inheritance);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "scripted-engine: %s\n", error.what());
    return 2;
  }
}
