#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include "common/posix/Confinement.h"
#include "support/ScratchFolder.h"

namespace voxtrel {
namespace {

namespace fs = std::filesystem;

bool canWrite(const fs::path& file) {
  return static_cast<bool>(std::ofstream(file, std::ios::app) << "x" << std::flush);
}

/// Runs `isSo` in a process that ends afterwards: what it gives up is given up for good.
template <typename Check>
void expectInAnotherProcess(Check isSo) {
  EXPECT_EXIT(std::_Exit(isSo() ? 0 : 1), ::testing::ExitedWithCode(0), "");
}

struct ConfinementDeathTest : ::testing::Test {
  fs::path own() const { return folder.path() / "own"; }
  fs::path other() const { return folder.path() / "other"; }

  ScratchFolder folder;
  fs::path ownFile = folder.write("own/file", "text");
  fs::path otherFile = folder.write("other/file", "text");
};

TEST_F(ConfinementDeathTest, WritingWorksInTheOwnFolderOnly) {
  expectInAnotherProcess([this] {
    const bool isConfined = confineWriting({own(), folder.path() / "missing"});
    return isConfined && canWrite(ownFile) && canWrite(own() / "new") &&
           fs::create_directory(own() / "folder") && !canWrite(otherFile) &&
           !canWrite(other() / "new");
  });
  EXPECT_EQ(fs::file_size(otherFile), 4U);
}

TEST_F(ConfinementDeathTest, OtherFilesCanBeReadButNotRemovedMovedOrCut) {
  expectInAnotherProcess([this] {
    confineWriting({own()});
    std::string text;
    std::ifstream(otherFile) >> text;
    return text == "text" && ::unlink(otherFile.c_str()) != 0 &&
           ::rename(otherFile.c_str(), (own() / "moved").c_str()) != 0 &&
           ::truncate(otherFile.c_str(), 0) != 0 && ::mkdir((other() / "new").c_str(), 0700) != 0 &&
           ::mkfifo((other() / "pipe").c_str(), 0600) != 0 &&
           ::symlink("/", (other() / "link").c_str()) != 0;
  });
  EXPECT_EQ(fs::file_size(otherFile), 4U);
}

TEST_F(ConfinementDeathTest, WhatIsAlreadyOpenCanBeWritten) {
  expectInAnotherProcess([this] {
    std::ofstream before(otherFile, std::ios::app);
    confineWriting({own()});
    return static_cast<bool>(before << "x" << std::flush);
  });
}

TEST_F(ConfinementDeathTest, HoldsForThreadsAndProgramsThatAreStartedLater) {
  expectInAnotherProcess([this] {
    confineWriting({own()});
    bool hasWritten = true;
    std::thread([&] { hasWritten = canWrite(otherFile); }).join();
    const std::string command = "touch '" + (other() / "new").string() + "' 2>/dev/null";
    return !hasWritten && std::system(command.c_str()) != 0;
  });
}

TEST_F(ConfinementDeathTest, NoRightsCanBeGained) {
  expectInAnotherProcess([] {
    confineWriting({});
    return ::prctl(PR_GET_NO_NEW_PRIVS, 0, 0, 0, 0) == 1;
  });
}

TEST_F(ConfinementDeathTest, ProtectedMemoryIsInNoCoreFile) {
  expectInAnotherProcess([] {
    ::unsetenv("VOXTREL_CORE");
    protectMemory();
    rlimit limit{};
    ::getrlimit(RLIMIT_CORE, &limit);
    return ::prctl(PR_GET_DUMPABLE, 0, 0, 0, 0) == 0 && limit.rlim_cur <= 1;
  });
}

TEST_F(ConfinementDeathTest, ForDebuggingMemoryIsNotProtected) {
  expectInAnotherProcess([] {
    ::setenv("VOXTREL_CORE", "1", 1);
    protectMemory();
    return ::prctl(PR_GET_DUMPABLE, 0, 0, 0, 0) == 1;
  });
}

}  // namespace
}  // namespace voxtrel
