#include <gtest/gtest.h>

#include <QByteArray>
#include <QFile>
#include <filesystem>

#include "voxtrel/platform/linux/permissions/HelpPages.h"

namespace voxtrel {
namespace {

namespace fs = std::filesystem;
using Pages = std::vector<std::string>;

TEST(HelpPagesTest, theBestPageComesFirstAndTheGeneralOneLast) {
  struct Row {
    PrivacyPane pane;
    HelpReader reader;
    Pages expected;
  };
  constexpr auto kMicrophone = PrivacyPane::microphone;
  constexpr auto kKeys = PrivacyPane::accessibility;
  constexpr auto kX11 = SessionKind::x11;
  constexpr auto kWayland = SessionKind::wayland;
  const Row rows[] = {
      {kMicrophone, {kX11, "", false}, {"microphone.html"}},
      {kMicrophone, {kX11, "XFCE", false}, {"microphone.html"}},
      {kMicrophone, {kX11, "ubuntu:GNOME", false}, {"microphone-gnome.html", "microphone.html"}},
      {kMicrophone, {kWayland, "KDE", false}, {"microphone-kde.html", "microphone.html"}},
      {kMicrophone,
       {kWayland, "KDE", true},
       {"microphone-flatpak.html", "microphone-kde.html", "microphone.html"}},
      {kMicrophone, {kX11, "", true}, {"microphone-flatpak.html", "microphone.html"}},
      {kKeys, {kX11, "GNOME", true}, {"accessibility-x11.html", "accessibility-wayland.html"}},
      {kKeys, {kWayland, "sway", false}, {"accessibility-wayland.html"}},
      {kKeys,
       {kWayland, "GNOME", false},
       {"accessibility-wayland-gnome.html", "accessibility-wayland.html"}},
      {kKeys,
       {kWayland, "KDE", false},
       {"accessibility-wayland-kde.html", "accessibility-wayland.html"}},
  };
  for (const Row& row : rows) EXPECT_EQ(helpPages(row.pane, row.reader), row.expected);
}

TEST(HelpPagesTest, everyPageIsInstalledAndComplete) {
  const QString folder =
      QString::fromStdString(HelpPages::folderFor(fs::read_symlink("/proc/self/exe").string()));
  for (const auto session : {SessionKind::x11, SessionKind::wayland}) {
    for (const char* desktops : {"", "GNOME", "KDE"}) {
      for (const auto pane : {PrivacyPane::microphone, PrivacyPane::accessibility}) {
        for (const std::string& page : helpPages(pane, {session, desktops, true})) {
          QFile file(folder + '/' + QString::fromStdString(page));
          ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << page;
          const QByteArray text = file.readAll();
          EXPECT_FALSE(text.contains("@VOXTREL")) << page << ": a placeholder is left";
          EXPECT_TRUE(text.contains("<html lang=\"en\">") && text.contains("prefers-color-scheme"));
          EXPECT_TRUE(text.endsWith("</html>\n")) << page;
          EXPECT_FALSE(text.contains("http")) << page << " needs the network";
        }
      }
    }
  }
}

TEST(HelpPagesTest, thePagesAreInTheShareFolderNextToTheProgramsFolder) {
  EXPECT_EQ(HelpPages::folderFor("/usr/bin/voxtrel"), "/usr/share/voxtrel/help");
  EXPECT_EQ(HelpPages::folderFor("/opt/my voxtrel/bin/voxtrel"),
            "/opt/my voxtrel/share/voxtrel/help");
}

}  // namespace
}  // namespace voxtrel
