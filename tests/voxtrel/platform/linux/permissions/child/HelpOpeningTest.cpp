#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>

#include "support/FakePorts.h"
#include "support/ScratchFolder.h"
#include "support/Variable.h"
#include "voxtrel/platform/linux/permissions/HelpPages.h"

namespace voxtrel {
namespace {

namespace fs = std::filesystem;
using testing::FakeLog;
using testing::Variable;

/// Pages in a folder, and an opener in PATH that records its arguments.
struct HelpFixture : ::testing::Test {
  void installOpener(const std::string& more = "") const {
    const auto opener = folder.write(
        "bin/xdg-open", "#!/bin/sh\nprintf '%s|' \"$@\" > '" + given().string() + ".new'\nmv '" +
                            given().string() + ".new' '" + given().string() + "'\n" + more);
    fs::permissions(opener, fs::perms::owner_all);
  }
  fs::path given() const { return folder.path() / "given"; }
  std::string waitForOpener() const {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!fs::exists(given()) && std::chrono::steady_clock::now() < deadline) {
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    std::ifstream file(given());
    return {std::istreambuf_iterator<char>(file), {}};
  }
  HelpPages pages(const std::string& name = "pages") {
    return {log, (folder.path() / name).string(), {SessionKind::wayland, "GNOME", false}};
  }

  ScratchFolder folder;
  FakeLog log;
  Variable path{"PATH", (folder.path().string() + "/bin:/usr/bin:/bin").c_str()};
};

TEST_F(HelpFixture, theBestExistingPageIsOpenedAsAUrl) {
  installOpener();
  folder.write("my pages/microphone.html", "");
  pages("my pages").open(PrivacyPane::microphone);
  EXPECT_EQ(waitForOpener(), "file://" + folder.path().string() + "/my%20pages/microphone.html|");
  EXPECT_TRUE(log.entries.empty());
}

TEST_F(HelpFixture, theDesktopsOwnPageIsPreferred) {
  installOpener();
  for (const char* page : {"accessibility-wayland.html", "accessibility-wayland-gnome.html"}) {
    folder.write(std::string("pages/") + page, "");
  }
  pages().open(PrivacyPane::accessibility);
  EXPECT_TRUE(waitForOpener().ends_with("/pages/accessibility-wayland-gnome.html|"));
}

TEST_F(HelpFixture, anOpenerThatHangsDoesNotBlock) {
  installOpener("exec sleep 3");
  folder.write("pages/microphone.html", "");
  const auto before = std::chrono::steady_clock::now();
  pages().open(PrivacyPane::microphone);
  EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(2));
  EXPECT_FALSE(waitForOpener().empty());
}

TEST_F(HelpFixture, aMissingPageIsLogged) {
  installOpener();
  pages().open(PrivacyPane::microphone);
  ASSERT_EQ(log.entries.size(), 1U);
  EXPECT_EQ(log.entries[0].message,
            "No help page microphone.html in " + folder.path().string() + "/pages");
  EXPECT_FALSE(fs::exists(given()));
}

TEST_F(HelpFixture, aMissingOpenerIsLogged) {
  folder.write("pages/microphone.html", "");
  const Variable nowhere("PATH", folder.path().c_str());
  pages().open(PrivacyPane::microphone);
  ASSERT_EQ(log.entries.size(), 1U);
  EXPECT_EQ(log.entries[0].message, "Cannot start xdg-open for the help page microphone.html");
}

}  // namespace
}  // namespace voxtrel
