#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "quillback/model/Manifest.h"
#include "quillback/model/ModelStore.h"
#include "support/ScratchFolder.h"

namespace voxtrel::quillback {
namespace {

using Kind = StoreFault::Kind;

class ModelStoreFixture : public testing::Test {
 protected:
  ModelStoreFixture() { std::filesystem::create_directories(folder_); }

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
  StoreFault fault() const {
    const auto stored = inspectStore(home_, "large-v3");
    EXPECT_FALSE(stored);
    return stored ? StoreFault{} : stored.error();
  }

  const ScratchFolder scratch_;
  const std::string home_ = scratch_.path();
  const std::string folder_ = home_ + "/.local/share/quillback/weights/whisper-large-v3";
};

TEST_F(ModelStoreFixture, WithoutAManifestTheModelIsAbsentWhateverElseIsThere) {
  EXPECT_EQ(fault().kind, Kind::absent);
  write("weights.bin", "weights");
  EXPECT_EQ(fault().kind, Kind::absent);
  std::filesystem::remove_all(home_ + "/.local");
  EXPECT_EQ(fault().kind, Kind::absent);
}

TEST_F(ModelStoreFixture, TheModelIsCompleteIfItsFilesHaveTheRightSizes) {
  write("weights.bin", "weights");
  writeManifest("whisper", 7);
  const auto stored = inspectStore(home_, "large-v3");
  ASSERT_TRUE(stored);
  EXPECT_EQ(stored->weightsFile, folder_ + "/weights.bin");
  EXPECT_EQ(stored->manifest.files.size(), 1U);
}

TEST_F(ModelStoreFixture, TheSecondFileIsTheVoiceDetection) {
  const std::string hash(64, '0');
  write("weights.bin", "weights");
  write("voice.bin", "voice");
  write("manifest.json",
        formatManifest(
            {"large-v3", "parakeet", {{"weights.bin", 7, hash}, {"voice.bin", 5, hash}}, "test"}));
  const auto stored = inspectStore(home_, "large-v3");
  ASSERT_TRUE(stored);
  EXPECT_EQ(stored->family, ModelFamily::parakeet);
  EXPECT_EQ(stored->voiceDetectionFile, folder_ + "/voice.bin");

  write("voice.bin", "voic");
  EXPECT_EQ(inspectStore(home_, "large-v3")->voiceDetectionFile, "");
  std::filesystem::remove(folder_ + "/voice.bin");
  EXPECT_EQ(inspectStore(home_, "large-v3")->voiceDetectionFile, "");
}

TEST_F(ModelStoreFixture, AnOlderManifestHasNoVoiceDetection) {
  write("weights.bin", "weights");
  writeManifest("whisper", 7);
  EXPECT_EQ(inspectStore(home_, "large-v3")->voiceDetectionFile, "");
}

TEST_F(ModelStoreFixture, AManifestThatOnlyNamesTheChosenModelIsNoModel) {
  write("manifest.json", formatManifest({"large-v3", "pocketsphinx", {}, "test", "base"}));
  EXPECT_EQ(fault().kind, Kind::absent);
  EXPECT_EQ(fault().why, "base was set up in its place");
  EXPECT_EQ(readManifest(home_, "large-v3")->chosen, "base");
}

TEST_F(ModelStoreFixture, TheUsersOwnModelsAreFoundByTheirManifests) {
  EXPECT_TRUE(customModels(home_).empty());
  const ScratchFolder other;
  EXPECT_TRUE(customModels((other.path() / "none").string()).empty());
  const auto put = [this](const std::string& name, bool isCustom) {
    const Manifest::File file{"w", 1, std::string(64, '0')};
    scratch_.write(".local/share/quillback/weights/whisper-" + name + "/manifest.json",
                   formatManifest({name, "whisper", {file}, "test", "", isCustom}));
  };
  put("zebra", true);
  put("base", false);
  put("ant", true);
  scratch_.write(".local/share/quillback/weights/whisper-bad/manifest.json", "{");
  scratch_.write(".local/share/quillback/weights/whisper-a file", "");
  EXPECT_EQ(customModels(home_), (std::vector<std::string>{"ant", "zebra"}));
}

TEST_F(ModelStoreFixture, TheModelIsDamagedIfAFileIsMissingOrHasAnotherSize) {
  writeManifest("whisper", 7);
  EXPECT_EQ(fault().kind, Kind::damaged);
  EXPECT_EQ(fault().why, "weights.bin is missing");
  write("weights.bin", "weight");
  EXPECT_EQ(fault().kind, Kind::damaged);
  EXPECT_EQ(fault().why, "weights.bin has 6 bytes instead of 7");
  std::filesystem::remove(folder_ + "/weights.bin");
  std::filesystem::create_directory(folder_ + "/weights.bin");
  EXPECT_EQ(fault().why, "weights.bin is missing");
}

TEST_F(ModelStoreFixture, TheManifestOfABuildWithoutWhisperIsNamedAsSuch) {
  writeManifest("pocketsphinx", 0);
  EXPECT_EQ(fault().kind, Kind::embedded);
  EXPECT_EQ(fault().why, "it was set up by a build without Whisper");
}

TEST_F(ModelStoreFixture, ADamagedManifestIsDamage) {
  write("manifest.json", "{");
  EXPECT_EQ(fault().kind, Kind::damaged);
  EXPECT_EQ(fault().why, "manifest.json is damaged: it is not a JSON object");
  writeManifest("pocketsphinx", 0, "small");
  EXPECT_EQ(fault().why, "manifest.json belongs to another model");
}

TEST_F(ModelStoreFixture, AManifestThatIsNoRegularFileIsDamage) {
  std::filesystem::create_directory(folder_ + "/manifest.json");
  EXPECT_EQ(fault().kind, Kind::damaged);
  EXPECT_EQ(fault().why, "manifest.json cannot be read");
  std::filesystem::remove(folder_ + "/manifest.json");
  // A pipe without a writer: reading it would block forever.
  ASSERT_EQ(::mkfifo((folder_ + "/manifest.json").c_str(), 0600), 0);
  EXPECT_EQ(fault().why, "manifest.json cannot be read");
}

TEST_F(ModelStoreFixture, AModelNameMayContainSlashesOrBeEmpty) {
  EXPECT_EQ(inspectStore(home_, "a/../../..").error().kind, Kind::absent);
  EXPECT_EQ(inspectStore(home_, "").error().kind, Kind::absent);
}

}  // namespace
}  // namespace voxtrel::quillback
