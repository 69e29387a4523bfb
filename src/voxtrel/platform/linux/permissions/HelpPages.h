#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "common/base/SessionKind.h"
#include "voxtrel/platform/Log.h"
#include "voxtrel/platform/Permissions.h"

namespace voxtrel {

/// What the choice of a help page depends on.
struct HelpReader {
  SessionKind session = SessionKind::x11;
  std::string desktops;  ///< separated by colons, as in XDG_CURRENT_DESKTOP
  bool sandboxed = false;
};

/// The pages that fit, best first. The last one fits every reader.
std::vector<std::string> helpPages(PrivacyPane pane, const HelpReader& reader);

/// Opens a help page in the user's browser that says where this desktop keeps its permissions.
/// Thread: the main thread; never waits for the browser.  Borrows: Log.
/// Fails by: one line in the log.
class HelpPages final : public PrivacySettings {
 public:
  /// `folder`: absolute path of the pages.
  HelpPages(Log& log, std::string folder, HelpReader reader);

  void open(PrivacyPane pane) override;

  /// The folder of the pages installed with the program at this path.
  static std::string folderFor(std::string_view executable);
  static HelpReader readerOfThisSession(bool sandboxed);

 private:
  const Logger logger_;
  const std::string folder_;
  const HelpReader reader_;
};

}  // namespace voxtrel
