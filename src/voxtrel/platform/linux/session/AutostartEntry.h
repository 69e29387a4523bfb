#pragma once

#include <map>
#include <string>

#include "voxtrel/platform/Preferences.h"

namespace voxtrel {

/// How the desktop is to start the application.
struct AutostartProgram {
  std::string exec;          ///< value of the key `Exec`
  std::string tryExec;       ///< value of the key `TryExec`
  bool isReachable = false;  ///< whether this process can see the program that they name
};

/// What to start again where the program at this absolute path runs: itself, or the AppImage that it
/// is in, which is mounted somewhere else every time.
/// Thread: any, as long as none changes the environment.
std::string startedProgram(const std::string& executable);

/// The running program. `executable` is its absolute path; inside a sandbox it is started by name.
AutostartProgram autostartProgram(const std::string& executable, bool sandboxed);

/// An entry in the desktop's autostart folder. It is on when the file is there, is an application's,
/// neither hidden nor switched off by the desktop's own settings, and the program that it tries is
/// still installed: when the desktop would start it. Enabling writes the file anew, disabling
/// removes it, and a user's own additions to it go with it. An entry that is off is left as it is
/// by disabling, as it may be there to overrule the system's.
/// Thread: the main thread.  Fails by: false where the file cannot be written or removed, or where
/// the program's path is not UTF-8, which such files must be.
class AutostartEntry final : public LoginItem {
 public:
  /// `configFolder`: the desktop's folder for settings, absolute; without one all fails.
  AutostartEntry(std::string configFolder, AutostartProgram program);

  bool isEnabled() const override;
  [[nodiscard]] bool enable() override;
  [[nodiscard]] bool disable() override;

 private:
  std::map<std::string, std::string> read() const;
  bool wouldStart(const std::map<std::string, std::string>& entry) const;

  const std::string folder_;
  const std::string file_;
  const AutostartProgram program_;
};

}  // namespace voxtrel
