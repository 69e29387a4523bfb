#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "support/OrdinaryUser.h"
#include "support/ScratchFolder.h"
#include "support/Variable.h"
#include "voxtrel/platform/linux/session/AutostartEntry.h"

namespace voxtrel {
namespace {

namespace fs = std::filesystem;
using testing::OrdinaryUser;
using testing::Variable;

constexpr const char* kFile = "autostart/org.voxtrel.Voxtrel.desktop";
constexpr const char* kProgram = "/bin/sh";  // one that is installed everywhere

struct AnAutostartEntry : ::testing::Test {
  std::string text() const {
    std::ifstream file(folder.path() / kFile, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  AutostartEntry entryOf(const std::string& program) const {
    return {folder.path().string(), autostartProgram(program, false)};
  }

  ScratchFolder folder;
  OrdinaryUser ordinaryUser{folder.path()};
  AutostartEntry entry = entryOf(kProgram);
};

TEST_F(AnAutostartEntry, thatIsAbsentIsOffAndStaysAbsentWhenDisabled) {
  EXPECT_FALSE(entry.isEnabled());
  EXPECT_TRUE(entry.disable());
  EXPECT_TRUE(fs::is_empty(folder.path()));
}

TEST_F(AnAutostartEntry, isOnAfterItWasWrittenInOnePiece) {
  EXPECT_TRUE(entry.enable());
  EXPECT_TRUE(entry.isEnabled());
  EXPECT_EQ(text(),
            "[Desktop Entry]\n"
            "Type=Application\n"
            "Name=Voxtrel\n"
            "Comment=Hold a key, speak, and read what you said\n"
            "Icon=org.voxtrel.Voxtrel\n"
            "Exec=/bin/sh\n"
            "TryExec=/bin/sh\n"
            "Terminal=false\n"
            "X-GNOME-Autostart-enabled=true\n");
  const auto files = fs::directory_iterator(folder.path() / "autostart");
  EXPECT_EQ(std::distance(begin(files), end(files)), 1);
}

TEST_F(AnAutostartEntry, isRemovedWhenDisabled) {
  ASSERT_TRUE(entry.enable());
  EXPECT_TRUE(entry.disable());
  EXPECT_FALSE(fs::exists(folder.path() / kFile));
  EXPECT_FALSE(entry.isEnabled());
}

TEST_F(AnAutostartEntry, passesDesktopFileValidateForEveryPath) {
  for (const char* program :
       {"/bin/sh", "/opt/My Apps/a\"b`c$d\\e", "/100 %", "/grö;ße&", "/a\tb"}) {
    fs::remove(folder.path() / kFile);
    ASSERT_TRUE(entryOf(program).enable()) << program;
    const std::string command =
        "desktop-file-validate '" + (folder.path() / kFile).string() + "' >&2";
    EXPECT_EQ(std::system(command.c_str()), 0) << program << '\n' << text();
  }
}

TEST_F(AnAutostartEntry, thatAlreadyStartsThisProgramIsNotRewritten) {
  const std::string own =
      "[Desktop Entry]\nType=Application\nExec=/bin/sh\nX-GNOME-Autostart-Delay=9\n";
  folder.write(kFile, own);
  EXPECT_TRUE(entry.enable());
  EXPECT_EQ(text(), own);
}

TEST_F(AnAutostartEntry, ofTheUsersOwnIsOnAndIsNotRewritten) {
  const std::string own = "[Desktop Entry]\nType=Application\nName=Mine\nExec=env A=b /bin/cat\n";
  folder.write(kFile, own);
  EXPECT_TRUE(entry.isEnabled());
  EXPECT_TRUE(entry.enable());
  EXPECT_TRUE(entry.restore());
  EXPECT_EQ(text(), own);
}

TEST_F(AnAutostartEntry, isRestoredOnlyIfThereIsNone) {
  EXPECT_TRUE(entry.restore());
  EXPECT_TRUE(entry.isEnabled());
}

TEST_F(AnAutostartEntry, thatTheDesktopTurnedOffIsNotRestored) {
  const std::string good = "[Desktop Entry]\nType=Application\nExec=/bin/sh\n";
  for (const std::string& off : {good + "Hidden=true\n", good + "X-GNOME-Autostart-enabled=false\n",
                                 good + "TryExec=/missing/program\n", std::string()}) {
    folder.write(kFile, off);
    EXPECT_FALSE(entry.restore()) << off;
    EXPECT_EQ(text(), off);
  }
}

TEST_F(AnAutostartEntry, thatIsALinkToNothingIsNotRestored) {
  fs::create_directories(folder.path() / "autostart");
  fs::create_symlink("/missing/entry", folder.path() / kFile);
  EXPECT_FALSE(entry.restore());
  EXPECT_TRUE(fs::is_symlink(folder.path() / kFile));
}

TEST_F(AnAutostartEntry, isOffForEveryReasonForWhichTheDesktopWouldNotStartIt) {
  const std::string good = "[Desktop Entry]\nType=Application\nExec=/bin/sh\n";
  const std::string off[] = {
      "",
      "Type=Application\nExec=/bin/sh\n",
      "[Desktop Entry]\nExec=/bin/sh\n",
      "[Desktop Entry]\nType=Link\nExec=/bin/sh\n",
      "[Desktop Entry]\nType=Application\n",
      good + "Hidden=true\n",
      good + "X-GNOME-Autostart-enabled=false\n",
      good + "TryExec=/missing/program\n",
      good + "TryExec=/etc/passwd\n",
      good + "TryExec=/bin\n",
      good + "TryExec=no-such-program-anywhere\n",
  };
  for (const std::string& text : off) {
    folder.write(kFile, text);
    EXPECT_FALSE(entry.isEnabled()) << text;
    EXPECT_TRUE(entry.disable());
    EXPECT_TRUE(fs::exists(folder.path() / kFile)) << "what is off is left alone";
    EXPECT_TRUE(entry.enable());
    EXPECT_TRUE(entry.isEnabled()) << text;
  }
}

TEST_F(AnAutostartEntry, isOnWithTheUsersSettingsAndAProgramByName) {
  for (const char* more : {"", "Hidden=false\n", "X-GNOME-Autostart-enabled=true\n", "TryExec=sh\n",
                           "TryExec=/bin/sh\n", "[Other]\nHidden=true\n"}) {
    folder.write(kFile, std::string("[Desktop Entry]\nType=Application\nExec=sh\n") + more);
    EXPECT_TRUE(entry.isEnabled()) << more;
  }
}

TEST_F(AnAutostartEntry, failsIfItsFolderCannotBeCreated) {
  folder.write("autostart", "a file in the way");
  EXPECT_FALSE(entry.enable());
  EXPECT_FALSE(entry.isEnabled());
  EXPECT_TRUE(entry.disable());
}

TEST_F(AnAutostartEntry, inAReadOnlyFolderCanBeNeitherWrittenNorRemoved) {
  ASSERT_TRUE(entry.enable());
  ::chmod((folder.path() / "autostart").c_str(), 0555);
  EXPECT_FALSE(entry.disable());
  EXPECT_TRUE(entry.isEnabled());
  const std::string off = "[Desktop Entry]\nHidden=true\n";
  folder.write(kFile, off);
  EXPECT_FALSE(entry.enable());
  EXPECT_EQ(text(), off) << "the old one stays whole";
  ::chmod((folder.path() / "autostart").c_str(), 0755);
}

TEST_F(AnAutostartEntry, thatCannotBeReadIsOff) {
  ASSERT_TRUE(entry.enable());
  ::chmod((folder.path() / kFile).c_str(), 0);
  EXPECT_FALSE(entry.isEnabled());
}

TEST_F(AnAutostartEntry, thatIsAFolderOrAPipeIsOffAndNeverBlocks) {
  fs::create_directories(folder.path() / kFile);
  EXPECT_FALSE(entry.isEnabled());
  EXPECT_FALSE(entry.enable());
  fs::remove(folder.path() / kFile);
  ASSERT_EQ(::mkfifo((folder.path() / kFile).c_str(), 0600), 0);
  EXPECT_FALSE(entry.isEnabled());
}

TEST_F(AnAutostartEntry, cannotNameAProgramWhosePathIsNotUtf8) {
  EXPECT_FALSE(entryOf("/opt/\xff/voxtrel").enable());
  EXPECT_FALSE(fs::exists(folder.path() / kFile));
}

TEST_F(AnAutostartEntry, withoutASettingsFolderFailsAndWritesNothing) {
  AutostartEntry homeless("", autostartProgram(kProgram, false));
  EXPECT_FALSE(homeless.enable());
  EXPECT_FALSE(homeless.isEnabled());
  EXPECT_TRUE(homeless.disable());
}

TEST_F(AnAutostartEntry, ofASandboxStartsTheSandboxAndIsOnAlthoughTheSandboxCannotSeeIt) {
  AutostartEntry sandboxed(folder.path().string(), autostartProgram("/app/bin/voxtrel", true));
  EXPECT_TRUE(sandboxed.enable());
  EXPECT_NE(text().find("\nExec=flatpak run org.voxtrel.Voxtrel\nTryExec=flatpak\n"),
            std::string::npos);
  EXPECT_TRUE(sandboxed.isEnabled());
}

TEST(StartedProgramTest, isTheAppImageOnlyForAProgramInsideIt) {
  const ScratchFolder folder;
  const std::string mounted = folder.path().string();
  const std::string inside = mounted + "/usr/bin/voxtrel";
  EXPECT_EQ(startedProgram(inside), inside);
  const Variable image("APPIMAGE", "/home/ada/Voxtrel.AppImage");
  EXPECT_EQ(startedProgram(inside), inside);
  const Variable mount("APPDIR", mounted.c_str());
  EXPECT_EQ(startedProgram(inside), "/home/ada/Voxtrel.AppImage");
  EXPECT_EQ(startedProgram("/usr/bin/voxtrel"), "/usr/bin/voxtrel");
  EXPECT_EQ(startedProgram(mounted + "2/voxtrel"), mounted + "2/voxtrel");
  const Variable noPath("APPIMAGE", "Voxtrel.AppImage");
  EXPECT_EQ(startedProgram(inside), inside);
}

}  // namespace
}  // namespace voxtrel
