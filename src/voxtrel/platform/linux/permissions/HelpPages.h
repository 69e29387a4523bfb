#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "common/base/SessionKind.h"
#include "voxtrel/platform/Log.h"
#include "voxtrel/platform/Permissions.h"

namespace voxtrel {

/// What the steps on a help page depend on.
struct HelpReader {
  SessionKind session = SessionKind::x11;
  std::string desktops;  ///< names between colons, as in XDG_CURRENT_DESKTOP
  bool sandboxed = false;
};

/// The pages that fit the reader, the best first and one that fits everybody last.
std::vector<std::string> helpPages(PrivacyPane pane, const HelpReader& reader);

/// Linux has no one place for permissions: a page of ours, opened in the user's browser, says where
/// this desktop has it.
/// Thread: the main thread; waits for nothing that is opened.  Borrows: Log.
/// Fails by: one line in the log.
class HelpPages final : public PrivacySettings {
 public:
  /// `folder`: where the pages are, absolute.
  HelpPages(Log& log, std::string folder, HelpReader reader);

  void open(PrivacyPane pane) override;

  /// The pages that were installed with the program at this path, and who reads them here.
  static std::string folderFor(std::string_view executable);
  static HelpReader readerOfThisSession(bool sandboxed);

 private:
  const Logger logger_;
  const std::string folder_;
  const HelpReader reader_;
};

}  // namespace voxtrel
