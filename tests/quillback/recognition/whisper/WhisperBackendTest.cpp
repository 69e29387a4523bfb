#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "quillback/recognition/Whisper.h"
#include "quillback/recognition/whisper/WhisperBackend.h"
#include "support/whisper_double/WhisperDouble.h"

namespace voxtrel::quillback {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

struct WhisperBackendTest : testing::Test {
  test::WhisperDouble& library = test::WhisperDouble::fresh();
  std::atomic<bool> isDropped{false};

  Transcription recognise(RecogniserBackend& backend, const std::vector<std::int16_t>& samples) {
    backend.begin(isDropped);
    backend.feed(samples);
    return backend.finish();
  }
};

TEST_F(WhisperBackendTest, TheModelIsLoadedOnceAndFreed) {
  {
    WhisperBackend backend("/store/weights.bin", {}, 3);
    const LoadReport report = backend.load();
    EXPECT_TRUE(report.isUsable);
    EXPECT_THAT(report.lines, ElementsAre("Using Whisper."));
    recognise(backend, {});
    recognise(backend, {});
    EXPECT_THAT(library.loadedFiles, ElementsAre("/store/weights.bin"));
    EXPECT_EQ(library.contexts, 1);
  }
  EXPECT_EQ(library.contexts, 0);
}

TEST_F(WhisperBackendTest, TheLibraryIsSilencedBeforeItLoads) {
  library.loads = false;
  WhisperBackend backend("/store/weights.bin", {}, 3);
  const LoadReport report = backend.load();
  EXPECT_TRUE(library.isLogSilenced);
  EXPECT_FALSE(report.isUsable);
  EXPECT_THAT(report.lines, ElementsAre(StartsWith("[quillback] ERROR ")));
}

TEST_F(WhisperBackendTest, TheSettingsReachTheLibrary) {
  WhisperBackend backend("w", {.language = "de", .translate = true}, 3);
  backend.load();
  recognise(backend, {});
  EXPECT_EQ(library.language, "de");
  EXPECT_TRUE(library.parameters.translate);
  EXPECT_EQ(library.parameters.n_threads, 3);
}

TEST_F(WhisperBackendTest, AutoLetsTheLibraryDetectTheLanguage) {
  WhisperBackend backend("w", {}, 1);
  EXPECT_EQ(backend.load().lines.size(), 1U);
  recognise(backend, {});
  EXPECT_EQ(library.language, "auto");
  EXPECT_FALSE(library.parameters.translate);
}

TEST_F(WhisperBackendTest, AnUnknownLanguageIsReportedAndDetected) {
  WhisperBackend backend("w", {.language = "klingon", .translate = false}, 1);
  const LoadReport report = backend.load();
  EXPECT_TRUE(report.isUsable);
  EXPECT_THAT(report.lines.back(), StartsWith("[quillback] ERROR Whisper does not know"));
  recognise(backend, {});
  EXPECT_EQ(library.language, "auto");
}

TEST_F(WhisperBackendTest, NothingIsPrintedAndNoUtteranceAffectsTheNext) {
  WhisperBackend backend("w", {}, 1);
  backend.load();
  recognise(backend, {});
  EXPECT_TRUE(library.parameters.no_context);
  EXPECT_FALSE(library.parameters.print_special || library.parameters.print_progress ||
               library.parameters.print_realtime || library.parameters.print_timestamps);
}

TEST_F(WhisperBackendTest, SamplesBecomeFractionsOfOneAndShortSpeechIsPaddedWithSilence) {
  WhisperBackend backend("w", {}, 1);
  backend.load();
  recognise(backend, {16384, -32768});
  ASSERT_EQ(library.samples.size(), 17'600U);
  EXPECT_EQ(library.samples[0], 0.5F);
  EXPECT_EQ(library.samples[1], -1.0F);
  library.samples.erase(library.samples.begin(), library.samples.begin() + 2);
  EXPECT_THAT(library.samples, Each(0.0F));
}

TEST_F(WhisperBackendTest, EachUtteranceIsRecognisedAlone) {
  WhisperBackend backend("w", {}, 1);
  backend.load();
  recognise(backend, std::vector<std::int16_t>(20'000, 100));
  EXPECT_EQ(library.samples.size(), 20'000U);
  recognise(backend, std::vector<std::int16_t>(18'000, 100));
  EXPECT_EQ(library.samples.size(), 18'000U);
}

TEST_F(WhisperBackendTest, SegmentsBecomeOneTextWithoutRemarks) {
  WhisperBackend backend("w", {}, 1);
  backend.load();
  library.segments = {" Good morning.", " [BLANK_AUDIO]", " (wind)", "  ", " How are you?"};
  EXPECT_EQ(recognise(backend, {}).text, "Good morning. How are you?");
  library.segments = {"\xE6\x97\xA9", "\xE4\xB8\x8A"};
  EXPECT_EQ(recognise(backend, {}).text, "\xE6\x97\xA9\xE4\xB8\x8A");
  library.segments = {};
  EXPECT_EQ(recognise(backend, {}).text, "");
}

TEST_F(WhisperBackendTest, AFailureOfTheLibraryGivesNoText) {
  WhisperBackend backend("w", {}, 1);
  backend.load();
  library.segments = {" left over"};
  library.fullResult = -1;
  EXPECT_EQ(recognise(backend, {}).text, "");
}

TEST_F(WhisperBackendTest, ADroppedUtteranceIsAborted) {
  WhisperBackend backend("w", {}, 1);
  backend.load();
  library.segments = {" unwanted"};
  library.encodings = 5;
  int asked = 0;
  library.whileItComputes = [&] {
    if (++asked == 2) isDropped = true;
  };
  EXPECT_EQ(recognise(backend, {}).text, "");
  EXPECT_TRUE(library.wasAborted);
  EXPECT_EQ(asked, 2);
}

TEST_F(WhisperBackendTest, TheEncodeTimeComesFromTheLibrarysMeanPerWindow) {
  WhisperBackend backend("w", {}, 1);
  backend.load();
  library.encodeMs = 0.001F;
  library.encodings = 3;
  library.whileItComputes = [] {
    const auto end = std::chrono::steady_clock::now() + 50us;
    while (std::chrono::steady_clock::now() < end) {
    }
  };
  const Transcription result = recognise(backend, {});
  EXPECT_EQ(result.encode, 3us);
  EXPECT_GE(result.decode, 147us);
  EXPECT_EQ(library.resets, 1);
}

TEST_F(WhisperBackendTest, TheEncodeTimeIsNeverLongerThanTheTotal) {
  WhisperBackend backend("w", {}, 1);
  backend.load();
  library.encodeMs = 1e6F;
  const Transcription result = recognise(backend, {});
  EXPECT_LT(result.encode, 1s);
  EXPECT_EQ(result.decode, 0us);
}

TEST_F(WhisperBackendTest, ThisBuildHasWhisper) {
  EXPECT_TRUE(isWhisperBuiltIn());
  const auto backend = makeWhisperBackend("w", {});
  backend->load();
  recognise(*backend, {});
  EXPECT_GE(library.parameters.n_threads, 1);
}

struct PhysicalCoresFixture : testing::Test {
  PhysicalCoresFixture() {
    std::string name = (fs::temp_directory_path() / "cores-XXXXXX").string();
    folder = ::mkdtemp(name.data());
  }
  PhysicalCoresFixture(const PhysicalCoresFixture&) = delete;
  PhysicalCoresFixture& operator=(const PhysicalCoresFixture&) = delete;
  ~PhysicalCoresFixture() override { fs::remove_all(folder); }

  void add(const std::string& processor, int package, int core) const {
    const fs::path topology = folder / processor / "topology";
    fs::create_directories(topology);
    std::ofstream(topology / "physical_package_id") << package << '\n';
    std::ofstream(topology / "core_id") << core << '\n';
  }

  fs::path folder;
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
