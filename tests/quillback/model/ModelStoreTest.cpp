#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "quillback/model/Files.h"
#include "quillback/model/Manifest.h"
#include "quillback/model/ModelStore.h"

namespace voxtrel::quillback {
namespace {

using Kind = StoreState::Kind;

class ModelStore : public testing::Test {
 protected:
  ModelStore() {
    std::string pattern = testing::TempDir() + "/storeXXXXXX";
    home_ = ::mkdtemp(pattern.data());
    folder_ = home_ + "/.local/share/quillback/weights/whisper-large-v3";
    std::filesystem::create_directories(folder_);
  }
  ~ModelStore() override { std::filesystem::remove_all(home_); }

  void write(const std::string& name, const std::string& text) const {
    std::ofstream(folder_ + "/" + name) << text;
  }
  void writeManifest(const std::string& recogniser, std::uint64_t sizeBytes,
                     const std::string& model = "large-v3") const {
    Manifest manifest{model, recogniser, {}, "test"};
    if (recogniser == "whisper")
      manifest.files = {{"weights.bin", sizeBytes, std::string(64, '0')}};
    write("manifest.json", formatManifest(manifest));
  }
  StoreState state() const { return inspectStore(home_, "large-v3"); }

  std::string home_;
  std::string folder_;
};

TEST_F(ModelStore, WithoutAManifestHasNoModelWhateverElseIsThere) {
  EXPECT_EQ(state().kind, Kind::absent);
  write("weights.bin", "weights");
  EXPECT_EQ(state().kind, Kind::absent);
  std::filesystem::remove_all(home_ + "/.local");
  EXPECT_EQ(state().kind, Kind::absent);
}

TEST_F(ModelStore, IsCompleteWhenItsFilesHaveTheirSizes) {
  write("weights.bin", "weights");
  writeManifest("whisper", 7);
  EXPECT_EQ(state().kind, Kind::complete);
  EXPECT_EQ(state().weightsFile, folder_ + "/weights.bin");
  EXPECT_EQ(state().why, "");
}

TEST_F(ModelStore, IsDamagedWhenAFileIsMissingOrHasAnotherSize) {
  writeManifest("whisper", 7);
  EXPECT_EQ(state().kind, Kind::damaged);
  EXPECT_EQ(state().why, "weights.bin is missing");
  write("weights.bin", "weight");
  EXPECT_EQ(state().kind, Kind::damaged);
  EXPECT_EQ(state().why, "weights.bin has 6 bytes instead of 7");
  EXPECT_EQ(state().weightsFile, "");
  std::filesystem::remove(folder_ + "/weights.bin");
  std::filesystem::create_directory(folder_ + "/weights.bin");
  EXPECT_EQ(state().why, "weights.bin is missing");
}

TEST_F(ModelStore, OfABuildWithoutWhisperSaysSo) {
  writeManifest("pocketsphinx", 0);
  EXPECT_EQ(state().kind, Kind::embedded);
  EXPECT_EQ(state().why, "it was set up by a build without Whisper");
}

TEST_F(ModelStore, IsDamagedWhenItsManifestIs) {
  write("manifest.json", "{");
  EXPECT_EQ(state().kind, Kind::damaged);
  EXPECT_EQ(state().why, "manifest.json is damaged: it is not a JSON object");
  writeManifest("pocketsphinx", 0, "small");
  EXPECT_EQ(state().why, "manifest.json belongs to another model");
}

TEST_F(ModelStore, IsDamagedWhenItsManifestIsNoFile) {
  std::filesystem::create_directory(folder_ + "/manifest.json");
  EXPECT_EQ(state().kind, Kind::damaged);
  EXPECT_EQ(state().why, "manifest.json cannot be read");
  std::filesystem::remove(folder_ + "/manifest.json");
  // Nobody ever writes to this pipe: reading it would last forever.
  ASSERT_EQ(::mkfifo((folder_ + "/manifest.json").c_str(), 0600), 0);
  EXPECT_EQ(state().why, "manifest.json cannot be read");
}

TEST_F(ModelStore, TakesANameWithASlashAsAFolderInAFolder) {
  EXPECT_EQ(inspectStore(home_, "a/../../..").kind, Kind::absent);
  EXPECT_EQ(inspectStore(home_, "").kind, Kind::absent);
}

TEST_F(ModelStore, ReplacesAFileAsAWhole) {
  EXPECT_EQ(replaceFile(folder_, "x", "old"), 0);
  EXPECT_EQ(replaceFile(folder_, "x", "new"), 0);
  EXPECT_EQ(readSmallFile(folder_ + "/x", 100), "new");
  EXPECT_FALSE(std::filesystem::exists(folder_ + "/x.tmp"));
  EXPECT_NE(replaceFile(folder_ + "/none", "x", "new"), 0);
}

}  // namespace
}  // namespace voxtrel::quillback
