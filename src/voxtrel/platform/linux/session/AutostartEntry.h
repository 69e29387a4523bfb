#pragma once

#include <map>
#include <string>

#include "voxtrel/platform/Preferences.h"

namespace voxtrel {

/// How the desktop starts the application.
struct AutostartProgram {
  std::string exec;          ///< value of the key `Exec`
  std::string tryExec;       ///< value of the key `TryExec`
  bool isReachable = false;  ///< whether this process can see that program's file
};

/// What to start at login for the running program `executable` (an absolute path): itself, or the
/// AppImage that contains it, whose mount point changes every time.
/// Thread: any, as long as none changes the environment.
std::string startedProgram(const std::string& executable);

/// The entry's commands for `executable`, an absolute path; a sandboxed program is started by name.
AutostartProgram autostartProgram(const std::string& executable, bool sandboxed);

/// An entry in the desktop's autostart folder. It is enabled if the desktop would start it: the file
/// exists, describes an application, is neither hidden nor switched off, and its program is
/// installed. `enable` replaces an entry that is off, `disable` removes one that is on. An entry that
/// is already as wanted is left alone: it may be the user's own, or override the system's.
/// Thread: the main thread.  Fails by: false if the file cannot be written or removed, or if the
/// program's path is not UTF-8, which these files require.
class AutostartEntry final : public LoginItem {
 public:
  /// `configFolder`: absolute path of the desktop's settings; if empty, everything fails.
  AutostartEntry(std::string configFolder, AutostartProgram program);

  bool isEnabled() const override;
  [[nodiscard]] bool enable() override;
  [[nodiscard]] bool restore() override;
  [[nodiscard]] bool disable() override;

 private:
  std::map<std::string, std::string> read() const;
  bool wouldStart(const std::map<std::string, std::string>& entry) const;

  const std::string folder_;
  const std::string file_;
  const AutostartProgram program_;
};

}  // namespace voxtrel
