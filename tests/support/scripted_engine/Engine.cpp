#include "support/scripted_engine/Engine.h"

#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <thread>

#include "support/scripted_engine/Endings.h"

namespace scripted {
namespace {

using std::chrono::milliseconds;

milliseconds takeTime(std::string_view& text) {
  return milliseconds(parseNumber(takeWord(text)));
}

void waitForFile(std::string_view path) {
  while (!std::filesystem::exists(path)) std::this_thread::sleep_for(milliseconds(2));
}

/// The mark by which a model counts as present.
void installWeights(std::string_view model) {
  const char* home = std::getenv("HOME");
  if (home == nullptr) throw std::invalid_argument("HOME is not set");
  const std::filesystem::path folder = std::filesystem::path(home) /
                                       ".local/share/quillback/weights" /
                                       ("whisper-" + std::string(model));
  std::filesystem::create_directories(folder);
  std::ofstream(folder / "manifest.json") << "{}\n";
}

[[noreturn]] void waitForever() {
  for (;;) ::pause();
}

}  // namespace

void Engine::perform(const Command& command) {
  if (performOutput(command.name, command.argument)) return;
  if (performEnding(command.name, command.argument)) return;
  if (performOther(command.name, command.argument)) return;
  throw std::invalid_argument("unknown command \"" + command.name + '"');
}

bool Engine::performOutput(std::string_view name, std::string_view argument) {
  if (name == "print") {
    print(argument, Output::Stream::standard);
  } else if (name == "error") {
    print(argument, Output::Stream::error);
  } else if (name == "write") {
    output_.write(unescape(argument));
  } else if (name == "repeat") {
    repeat(argument);
  } else if (name == "flood") {
    flood(argument);
  } else if (name == "long-line") {
    output_.longLine(parseNumber(argument));
  } else if (name == "split") {
    const auto size = static_cast<std::size_t>(parseNumber(takeWord(argument)));
    output_.split(size, takeTime(argument));
  } else if (name == "progress") {
    printProgress(argument);
  } else if (name == "report") {
    output_.write(describe(inheritance_));
  } else if (name == "close-output") {
    Output::close();
  } else {
    return false;
  }
  return true;
}

bool Engine::performEnding(std::string_view name, std::string_view argument) {
  if (name == "exit") {
    const auto code = static_cast<int>(parseNumber(argument));
    log_.note("exit " + std::to_string(code));
    ::_exit(code);
  }
  if (name == "signal") {
    const int signal = signalNumber(argument);
    log_.note("signal " + std::to_string(signal));
    dieBySignal(signal);
  }
  if (name == "ignore-term") {
    ignoreSignal(signalNumber("TERM"));
  } else if (name == "ignore") {
    ignoreSignal(signalNumber(argument));
  } else if (name == "on-term") {
    arrangeTerm(argument);
  } else {
    return false;
  }
  return true;
}

bool Engine::performOther(std::string_view name, std::string_view argument) {
  if (name == "sleep") {
    std::this_thread::sleep_for(takeTime(argument));
  } else if (name == "wait-for") {
    waitForFile(argument);
  } else if (name == "wait") {
    waitForever();
  } else if (name == "grandchild") {
    startGrandchild(argument, false);
  } else if (name == "flooding-grandchild") {
    startGrandchild(argument, true);
  } else if (name == "log") {
    log_.write(unescape(argument));
  } else if (name == "log-report") {
    log_.write("report\n" + describe(inheritance_));
  } else if (name == "weights") {
    installWeights(argument);
  } else {
    return false;
  }
  return true;
}

void Engine::print(std::string_view text, Output::Stream stream) {
  output_.write(unescape(text) + '\n', stream);
}

void Engine::repeat(std::string_view argument) {
  const unsigned long long times = parseNumber(takeWord(argument));
  for (unsigned long long i = 0; i < times; ++i) print(argument, Output::Stream::standard);
}

void Engine::flood(std::string_view argument) {
  const unsigned long long size = parseNumber(takeWord(argument));
  constexpr std::string_view kLine = "encoder block finished, next one is on its way to the GPU";
  output_.flood(size, argument.empty() ? kLine : argument);
}

void Engine::printProgress(std::string_view argument) {
  const auto done = static_cast<double>(parseNumber(takeWord(argument)));
  const auto total = static_cast<double>(parseNumber(takeWord(argument)));
  std::array<char, 128> line{};
  const int length = std::snprintf(line.data(), line.size(), "%.1f MB / %.1f MB (%.1f%%)\r", done,
                                   total, 100 * done / total);
  output_.write({line.data(), static_cast<std::size_t>(length)});
}

void Engine::arrangeTerm(std::string_view argument) {
  const auto code = static_cast<int>(parseNumber(takeWord(argument)));
  const std::string_view delay = takeWord(argument);
  const milliseconds time(delay.empty() ? 0 : parseNumber(delay));
  endOnTerm(code, time, argument.empty() ? "" : unescape(argument) + '\n');
}

void Engine::startGrandchild(std::string_view argument, bool floods) {
  const pid_t pid = scripted::startGrandchild(takeTime(argument), floods);
  log_.note("grandchild " + std::to_string(pid));
}

}  // namespace scripted
