#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "quillback/recognition/Whisper.h"
#include "quillback/recognition/whisper/WhisperLibrary.h"
#include "support/ScratchFolder.h"

namespace voxtrel::quillback {
namespace {

namespace fs = std::filesystem;

TEST(WhisperLibraryTest, ThisBuildHasWhisperAndSaysOnWhatItRuns) {
  EXPECT_TRUE(isWhisperBuiltIn());
  const std::string text = describeWhisper(3);
  EXPECT_TRUE(text.starts_with("whisper.cpp 1.")) << text;
  EXPECT_NE(text.find(", 3 threads, "), std::string::npos) << text;
  EXPECT_NE(describeWhisper(1).find(", 1 thread, "), std::string::npos);
  const std::string cores = ", " + std::to_string(physicalCores(kCpuFolder)) + " thread";
  EXPECT_NE(describeWhisper(0).find(cores), std::string::npos) << cores;
}

TEST(WhisperLibraryTest, TheLineAtTheStartHasNoWordsOfOtherLines) {
  RecogniserOptions options;
  options.threads = 2;
  for (const char* const kind : {"Whisper", "Parakeet"}) {
    const std::string line = usingLine(kind, options) + ", without voice detection.";
    for (const char* const marker :
         {"Ready.", "Recording...", "Processing", "audio", "encode=", "ERROR", "Failed", "failed",
          "Accessibility", "Microphone", "[gpu-decode]"}) {
      EXPECT_EQ(line.find(marker), std::string::npos) << line;
    }
  }
}

struct PhysicalCoresFixture : testing::Test {
  void add(const std::string& processor, int package, int core) const {
    const fs::path topology = folder / processor / "topology";
    fs::create_directories(topology);
    std::ofstream(topology / "physical_package_id") << package << '\n';
    std::ofstream(topology / "core_id") << core << '\n';
  }

  const ScratchFolder scratch;
  const fs::path& folder = scratch.path();
};

TEST_F(PhysicalCoresFixture, TwoThreadsOfACoreCountOnce) {
  for (int processor = 0; processor < 8; ++processor) {
    add("cpu" + std::to_string(processor), 0, processor % 4);
  }
  EXPECT_EQ(physicalCores(folder.c_str()), 4);
}

TEST_F(PhysicalCoresFixture, CoresOfTwoPackagesHaveTheSameNumbers) {
  for (int processor = 0; processor < 12; ++processor) {
    add("cpu" + std::to_string(processor), processor / 6, processor % 6);
  }
  EXPECT_EQ(physicalCores(folder.c_str()), 12);
}

TEST_F(PhysicalCoresFixture, OtherFoldersAndProcessorsThatAreOffDoNotCount) {
  add("cpu0", 0, 0);
  add("cpu1", 0, 1);
  add("cpufreq", 0, 7);
  add("cpu", 0, 8);
  add("cpu2x", 0, 9);
  fs::create_directories(folder / "cpu3");
  EXPECT_EQ(physicalCores(folder.c_str()), 2);
}

TEST_F(PhysicalCoresFixture, WithoutADescriptionThereIsAtLeastOne) {
  EXPECT_GE(physicalCores(folder.c_str()), 1);
  EXPECT_GE(physicalCores("/nowhere"), 1);
}

TEST_F(PhysicalCoresFixture, TheDescriptionOfThisMachineIsRead) {
  EXPECT_GE(physicalCores(kCpuFolder), 1);
}

}  // namespace
}  // namespace voxtrel::quillback
