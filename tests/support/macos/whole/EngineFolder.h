#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "support/ScratchFolder.h"

namespace voxtrel::testing {

/// A home, and the application's folder with a scripted engine in it.
/// Thread: any, one at a time.  Owns: both folders.
/// Fails by: an exception, which fails the test.
class EngineFolder {
 public:
  /// Whom a command goes to.
  enum class Mode { run, setup };

  EngineFolder();

  const ScratchFolder& home() const { return home_; }
  /// Where the application is; the rig takes it for a bundle.
  std::filesystem::path path() const { return folder_.path() / "Voxtrel.app"; }
  std::filesystem::path engine() const { return path() / "quillback"; }

  /// The model counts as downloaded from now on.
  void provideWeights() const;
  /// Setups that start from now on do these commands and then wait for others.
  void scriptSetup(std::string_view commands) const;

  /// Lets the process that runs in this mode do a command. Returns its id, 0 if the command has
  /// ended it; none if there is no such process.
  std::optional<int> tell(const std::string& command, Mode mode = Mode::run) const;
  /// The id of the process that runs in this mode, if there is one.
  std::optional<int> find(Mode mode = Mode::run) const { return tell("sleep 0", mode); }

 private:
  const ScratchFolder home_;
  const ScratchFolder folder_;
};

}  // namespace voxtrel::testing
