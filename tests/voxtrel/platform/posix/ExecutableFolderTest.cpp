#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "voxtrel/platform/posix/ExecutableFolder.h"

namespace voxtrel {
namespace {

namespace fs = std::filesystem;

TEST(ExecutableFolder, FindsAFileBesideTheApplicationAndNothingElse) {
  std::string pattern = (fs::temp_directory_path() / "voxtrel-bundle-XXXXXX").string();
  const fs::path folder = ::mkdtemp(pattern.data());
  const ExecutableFolder bundle((folder / "voxtrel").string());
  EXPECT_EQ(bundle.auxiliaryExecutable("quillback"), std::nullopt);
  fs::create_directory(folder / "quillback");
  EXPECT_EQ(bundle.auxiliaryExecutable("quillback"), std::nullopt) << "a folder is no executable";
  fs::remove(folder / "quillback");
  std::ofstream(folder / "quillback") << "not executable: its start will say so";
  EXPECT_EQ(bundle.auxiliaryExecutable("quillback"), (folder / "quillback").string());
  fs::remove_all(folder);
}

TEST(ExecutablePath, IsThisProgramWithLinksFollowed) {
  EXPECT_EQ(executablePath(), fs::canonical("/proc/self/exe").string());
  EXPECT_TRUE(ExecutableFolder(executablePath()).auxiliaryExecutable("child_tests").has_value());
}

}  // namespace
}  // namespace voxtrel
