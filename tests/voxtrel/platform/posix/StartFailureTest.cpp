#include <sys/resource.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "support/Sanitizers.h"
#include "voxtrel/platform/posix/ChildTest.h"

namespace voxtrel {
namespace {

namespace fs = std::filesystem;

class StartFailureTest : public ChildTest {
 public:
  StartFailureTest() {
    std::string pattern = (fs::temp_directory_path() / "voxtrel-child-XXXXXX").string();
    folder_ = ::mkdtemp(pattern.data());
  }
  StartFailureTest(const StartFailureTest&) = delete;
  StartFailureTest& operator=(const StartFailureTest&) = delete;
  ~StartFailureTest() override { fs::remove_all(folder_); }

 protected:
  std::string makeFile(const std::string& content, fs::perms permissions) const {
    const fs::path file = folder_ / "quillback";
    std::ofstream(file, std::ios::binary) << content;
    fs::permissions(file, permissions);
    return file.string();
  }

  void expectFailure(const std::string& executable, const std::string& reason,
                     const std::string& folder = "") {
    const StartedChild child = start(executable, {"run"}, folder);
    EXPECT_EQ(child.process, nullptr);
    EXPECT_EQ(child.failure, "Cannot start " + executable + ": " + reason);
    EXPECT_EQ(child.record->output(), "");
    EXPECT_EQ(child.record->status(), std::nullopt);
  }

  fs::path folder_;
};

TEST_F(StartFailureTest, AMissingFileIsNamed) {
  expectFailure((folder_ / "quillback").string(), "No such file or directory");
}

TEST_F(StartFailureTest, AFileWithoutExecutePermissionIsDenied) {
  expectFailure(makeFile("#!/bin/sh\n", fs::perms::owner_read), "Permission denied");
}

TEST_F(StartFailureTest, AFileThatIsNoProgramIsNotGivenToAShell) {
  expectFailure(makeFile("echo hello\n", fs::perms::owner_all), "Exec format error");
}

TEST_F(StartFailureTest, ADirectoryIsDenied) {
  expectFailure(folder_.string(), "Permission denied");
}

TEST_F(StartFailureTest, AMissingInterpreterIsReported) {
  expectFailure(makeFile("#!/no/such/interpreter\n", fs::perms::owner_all),
                "No such file or directory");
}

TEST_F(StartFailureTest, ANameWithoutFolderIsNotSearchedFor) {
  expectFailure("sh", "No such file or directory");
}

TEST_F(StartFailureTest, AMissingWorkingDirectoryIsReported) {
  const std::string missing = (folder_ / "gone").string();
  expectFailure(SCRIPTED_ENGINE, "No such file or directory", missing);
}

#ifndef VOXTREL_ADDRESS_SANITIZER  // this sanitizer opens descriptors to inspect memory
TEST_F(StartFailureTest, WithoutDescriptorsToSpareNothingStartsAndNothingBreaks) {
  rlimit before{};
  ::getrlimit(RLIMIT_NOFILE, &before);
  for (rlim_t limit = 0; limit < 16; ++limit) {
    const rlimit few{limit, before.rlim_max};
    ::setrlimit(RLIMIT_NOFILE, &few);
    const StartedChild child = start(SCRIPTED_ENGINE, {"run", "--exit", "3"});
    ::setrlimit(RLIMIT_NOFILE, &before);
    if (limit == 0) {
      EXPECT_EQ(child.failure,
                std::string("Cannot start ") + SCRIPTED_ENGINE + ": Too many open files");
    }
  }
  EXPECT_EQ(statusOf({"--exit", "3"}), 3);
}
#endif

TEST_F(StartFailureTest, AFailureLeavesTheNextStartAlone) {
  const std::string file = makeFile("", fs::perms::owner_read);
  for (int i = 0; i < 20; ++i) expectFailure(file, "Permission denied");
  EXPECT_EQ(outputOf({"--print", "hello", "--exit", "0"}), "hello\n");
}

}  // namespace
}  // namespace voxtrel
