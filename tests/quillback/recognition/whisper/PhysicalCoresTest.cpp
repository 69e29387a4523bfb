#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "quillback/recognition/whisper/PhysicalCores.h"

namespace voxtrel::quillback {
namespace {

namespace fs = std::filesystem;

struct PhysicalCoresTest : testing::Test {
  PhysicalCoresTest() {
    std::string name = (fs::temp_directory_path() / "cores-XXXXXX").string();
    folder = ::mkdtemp(name.data());
  }
  PhysicalCoresTest(const PhysicalCoresTest&) = delete;
  PhysicalCoresTest& operator=(const PhysicalCoresTest&) = delete;
  ~PhysicalCoresTest() override { fs::remove_all(folder); }

  void add(const std::string& processor, int package, int core) const {
    const fs::path topology = folder / processor / "topology";
    fs::create_directories(topology);
    std::ofstream(topology / "physical_package_id") << package << '\n';
    std::ofstream(topology / "core_id") << core << '\n';
  }

  fs::path folder;
};

TEST_F(PhysicalCoresTest, TwoThreadsOfACoreCountOnce) {
  for (int processor = 0; processor < 8; ++processor) {
    add("cpu" + std::to_string(processor), 0, processor % 4);
  }
  EXPECT_EQ(physicalCores(folder.c_str()), 4);
}

TEST_F(PhysicalCoresTest, CoresOfTwoPackagesHaveTheSameNumbers) {
  for (int processor = 0; processor < 12; ++processor) {
    add("cpu" + std::to_string(processor), processor / 6, processor % 6);
  }
  EXPECT_EQ(physicalCores(folder.c_str()), 12);
}

TEST_F(PhysicalCoresTest, OtherFoldersAndProcessorsThatAreSwitchedOffDoNotCount) {
  add("cpu0", 0, 0);
  add("cpu1", 0, 1);
  add("cpufreq", 0, 7);
  add("cpu", 0, 8);
  add("cpu2x", 0, 9);
  fs::create_directories(folder / "cpu3");
  EXPECT_EQ(physicalCores(folder.c_str()), 2);
}

TEST_F(PhysicalCoresTest, WithoutADescriptionThereIsStillOne) {
  EXPECT_GE(physicalCores(folder.c_str()), 1);
  EXPECT_GE(physicalCores("/nowhere"), 1);
}

TEST_F(PhysicalCoresTest, ThisMachinesOwnDescriptionIsRead) {
  EXPECT_GE(physicalCores(kCpuFolder), 1);
}

}  // namespace
}  // namespace voxtrel::quillback
