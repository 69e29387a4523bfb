#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "quillback/insertion/clipboard/DesktopPrograms.h"
#include "support/FakeEnginePorts.h"
#include "support/PollLoop.h"
#include "support/ScratchFolder.h"

namespace voxtrel::quillback {
namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;

/// Replaces the desktop's programs by scripts that write down their arguments and input.
class DesktopProgramsTest : public ::testing::Test {
 protected:
  DesktopProgramsTest() { setenv("PATH", (folder_.path().string() + ":/usr/bin:/bin").c_str(), 1); }

  void install(const std::string& program, const std::string& script) {
    const fs::path file =
        folder_.write(program, "#!/bin/sh\ncd " + folder_.path().string() + "\n" + script + "\n");
    fs::permissions(file, fs::perms::owner_all);
  }
  std::string written(const std::string& file) {
    const auto end = loop_.now() + std::chrono::seconds(10);
    while (!fs::exists(folder_.path() / "done") && loop_.now() < end) loop_.runFor(milliseconds(5));
    loop_.runFor(milliseconds(20));
    std::ifstream in(folder_.path() / file);
    return {std::istreambuf_iterator<char>(in), {}};
  }

  test::PollLoop loop_;
  ScratchFolder folder_;
  test::FakeOutput output_;
  DesktopPrograms programs_{loop_, output_};
};

TEST_F(DesktopProgramsTest, CopyingALongTextDoesNotWaitForTheProgram) {
  install("wl-copy", "sleep 0.1; cat > text; touch done");
  const std::string text(1'000'000, 'x');
  const auto start = std::chrono::steady_clock::now();
  programs_.copy(text);
  EXPECT_LT(std::chrono::steady_clock::now() - start, milliseconds(90));
  EXPECT_EQ(written("text"), text);
  EXPECT_THAT(output_.lines, ::testing::IsEmpty());
}

TEST_F(DesktopProgramsTest, AFailedCopyIsAnErrorLineEachTime) {
  install("wl-copy", "touch done; exit 1");
  programs_.copy("one");
  written("none");
  programs_.copy("two");
  loop_.runFor(milliseconds(300));
  EXPECT_THAT(output_.lines, ::testing::SizeIs(2));
}

}  // namespace
}  // namespace voxtrel::quillback
