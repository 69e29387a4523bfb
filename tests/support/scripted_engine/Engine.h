#pragma once

#include <atomic>
#include <string>
#include <string_view>

#include "support/scripted_engine/Command.h"
#include "support/scripted_engine/EngineLog.h"
#include "support/scripted_engine/Inheritance.h"
#include "support/scripted_engine/Output.h"

namespace scripted {

/// Runs the commands.
/// Thread: any; commands that write wait for each other.  Owns: the output.  Borrows: the log.
class Engine {
 public:
  Engine(const Inheritance& inheritance, const EngineLog& log)
      : inheritance_(inheritance), log_(log) {}

  /// Fails by: throwing std::invalid_argument for a command or an argument that it does not know.
  void perform(const Command& command);

 private:
  bool performOutput(std::string_view name, std::string_view argument);
  bool performEnding(std::string_view name, std::string_view argument);
  bool performOther(std::string_view name, std::string_view argument);
  void print(std::string_view text, Output::Stream stream);
  void repeat(std::string_view argument);
  void flood(std::string_view argument);
  void printProgress(std::string_view argument);
  void arrangeTerm(std::string_view argument);
  void startGrandchild(std::string_view argument, bool floods);

  const Inheritance& inheritance_;
  const EngineLog& log_;
  Output output_;
};

}  // namespace scripted
