#include "voxtrel/platform/linux/permissions/HelpPages.h"

#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QUrl>
#include <algorithm>
#include <filesystem>
#include <utility>

namespace voxtrel {

namespace {

constexpr const char* kOpener = "xdg-open";

/// How the names of pages for this desktop end; empty for a desktop without pages.
std::string desktopSuffix(const std::string& desktops) {
  switch (desktopFamily(desktops)) {
    case DesktopFamily::gnome:
      return "-gnome";
    case DesktopFamily::kde:
      return "-kde";
    case DesktopFamily::other:
      break;
  }
  return {};
}

/// Detached, because the application quits right after this.
bool startDetached(const QString& url) {
  QProcess opener;
  opener.setProgram(kOpener);
  opener.setArguments({url});
  opener.setStandardInputFile(QProcess::nullDevice());
  opener.setStandardOutputFile(QProcess::nullDevice());
  opener.setStandardErrorFile(QProcess::nullDevice());
  return opener.startDetached();
}

}  // namespace

std::vector<std::string> helpPages(PrivacyPane pane, const HelpReader& reader) {
  const std::string suffix = desktopSuffix(reader.desktops);
  std::vector<std::string> pages;
  if (pane == PrivacyPane::microphone) {
    if (reader.sandboxed) pages.emplace_back("microphone-flatpak.html");
    if (!suffix.empty()) pages.push_back("microphone" + suffix + ".html");
    pages.emplace_back("microphone.html");
    return pages;
  }
  if (reader.session == SessionKind::x11) {
    pages.emplace_back("accessibility-x11.html");
  } else if (!suffix.empty()) {
    pages.push_back("accessibility-wayland" + suffix + ".html");
  }
  pages.emplace_back("accessibility-wayland.html");
  return pages;
}

HelpPages::HelpPages(Log& log, std::string folder, HelpReader reader)
    : logger_(log, "main"), folder_(std::move(folder)), reader_(std::move(reader)) {}

void HelpPages::open(PrivacyPane pane) {
  const auto pages = helpPages(pane, reader_);
  const auto pathOf = [this](const std::string& page) {
    return QFile::decodeName((folder_ + '/' + page).c_str());
  };
  const auto page = std::find_if(pages.begin(), pages.end(), [&](const std::string& name) {
    return QFileInfo(pathOf(name)).isFile();
  });
  if (page == pages.end()) {
    logger_.error("No help page " + pages.back() + " in " + folder_);
    return;
  }
  const QUrl url = QUrl::fromLocalFile(pathOf(*page));
  if (!startDetached(url.toString(QUrl::FullyEncoded))) {
    logger_.error(std::string("Cannot start ") + kOpener + " for the help page " + *page);
  }
}

std::string HelpPages::folderFor(std::string_view executable) {
  const std::filesystem::path program(executable);
  return (program.parent_path().parent_path() / "share/voxtrel/help").string();
}

HelpReader HelpPages::readerOfThisSession(bool sandboxed) {
  return {.session = currentSessionKind(SessionKind::wayland),
          .desktops = qEnvironmentVariable("XDG_CURRENT_DESKTOP").toStdString(),
          .sandboxed = sandboxed};
}

}  // namespace voxtrel
