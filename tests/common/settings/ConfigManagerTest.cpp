#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>

#include "common/settings/ConfigManager.h"
#include "support/ScratchFolder.h"

namespace voxtrel {
namespace {

namespace fs = std::filesystem;

constexpr const char* kConfig = ".config/quillback/config.toml";
constexpr const char* kGerman = "[model]\nlanguage = \"de\"\nwhisper_model = \"medium\"\n";

/// A home directory with settings and models.
struct Configuration : testing::Test {
  ScratchFolder home{};
  ConfigManager config{home.path().string()};

  void expectDefaults() const {
    EXPECT_EQ(config.readSettings(), ModelSettings());
    EXPECT_EQ(config.readWhisperModel(), "large-v3");
  }
  void expectGerman() const {
    EXPECT_EQ(config.readSettings(), (ModelSettings{"de", false, "right_cmd", "medium"}));
    EXPECT_EQ(config.readWhisperModel(), "medium");
  }
  std::string manifestOf(const std::string& model) const {
    return ".local/share/quillback/weights/whisper-" + model + "/manifest.json";
  }
};

TEST_F(Configuration, HasItsPlaceInTheHomeDirectory) {
  EXPECT_EQ(ConfigManager("/Users/ann").configPath(), "/Users/ann/.config/quillback/config.toml");
  EXPECT_EQ(ConfigManager("/Users/ann//").configPath(), "/Users/ann/.config/quillback/config.toml");
  EXPECT_EQ(ConfigManager("/").configPath(), "/.config/quillback/config.toml");
}

TEST_F(Configuration, IsTheDefaultsWithoutAFile) {
  expectDefaults();
  EXPECT_TRUE(fs::is_empty(home.path()));  // nothing was created by looking
}

TEST_F(Configuration, IsReadFromTheFileEachTime) {
  home.write(kConfig, kGerman);
  expectGerman();
  home.write(kConfig, "[model]\nwhisper_model = 1\nwhisper_model = 2\n");
  EXPECT_EQ(config.readSettings().model, "2");
  EXPECT_EQ(config.readWhisperModel(), "1");
  fs::remove(home.path() / kConfig);
  expectDefaults();
}

TEST_F(Configuration, IsReadWholeWhenItIsLong) {
  std::string text = "[model]\n";
  while (text.size() < 1'000'000) text += "# a comment that says nothing\n";
  home.write(kConfig, text + "language = \"de\"\nwhisper_model = \"medium\"");
  expectGerman();
}

TEST_F(Configuration, IsTheDefaultsWhereOneByteIsNotUtf8) {
  home.write(kConfig, kGerman + std::string("# caf\xE9\n"));
  expectDefaults();
  home.write(kConfig, kGerman + std::string("# caf\xC3\xA9\n"));
  expectGerman();
}

TEST_F(Configuration, IsReadThroughLinks) {
  home.write("elsewhere/engine.toml", kGerman);
  fs::create_symlink("../../elsewhere/engine.toml", home.prepare(kConfig));
  expectGerman();
  fs::remove(home.path() / "elsewhere/engine.toml");
  expectDefaults();
}

TEST_F(Configuration, IsTheDefaultsWhereAFolderStandsInItsPlace) {
  fs::create_directories(home.prepare(kConfig));
  expectDefaults();
}

TEST_F(Configuration, IsTheDefaultsWhereAFileStandsInItsFoldersPlace) {
  home.write(".config/quillback", kGerman);
  expectDefaults();
}

TEST_F(Configuration, IsNotWaitedForWhereAFifoStandsInItsPlace) {
  ASSERT_EQ(::mkfifo(home.prepare(kConfig).c_str(), 0600), 0);
  expectDefaults();
}

TEST_F(Configuration, IsTheDefaultsWhereALinkToItselfStandsInItsPlace) {
  fs::create_symlink("config.toml", home.prepare(kConfig));
  expectDefaults();
}

TEST_F(Configuration, IsTheDefaultsWhereThePathIsTooLong) {
  const ConfigManager tooLong("/" + std::string(5000, 'x'));
  EXPECT_EQ(tooLong.readSettings(), ModelSettings());
  EXPECT_FALSE(tooLong.weightsExist("large-v3"));
}

TEST_F(Configuration, NamesTheManifestOfAModelByTheModelsName) {
  const ConfigManager example("/Users/example");
  EXPECT_EQ(example.weightsManifestPath("large-v3"),
            "/Users/example/.local/share/quillback/weights/whisper-large-v3/manifest.json");
  EXPECT_EQ(example.weightsFolder("large-v3"),
            "/Users/example/.local/share/quillback/weights/whisper-large-v3");
  EXPECT_EQ(example.weightsManifestPath(""),
            "/Users/example/.local/share/quillback/weights/whisper-/manifest.json");
  EXPECT_EQ(example.weightsManifestPath("a/../b"),
            "/Users/example/.local/share/quillback/weights/whisper-a/../b/manifest.json");
}

TEST_F(Configuration, FindsWeightsByTheirManifestAlone) {
  EXPECT_FALSE(config.weightsExist("large-v3"));
  home.write(".local/share/quillback/weights/whisper-large-v3/weights.bin", "0");
  EXPECT_FALSE(config.weightsExist("large-v3"));
  home.write(manifestOf("large-v3"), "");
  EXPECT_TRUE(config.weightsExist("large-v3"));
  EXPECT_FALSE(config.weightsExist("large"));
  EXPECT_FALSE(config.weightsExist(""));
}

TEST_F(Configuration, FindsWeightsWhoseManifestIsAFolderALinkOrNested) {
  fs::create_directories(home.prepare(manifestOf("folder")));
  EXPECT_TRUE(config.weightsExist("folder"));
  home.write(manifestOf("nested/model"), "{}");
  EXPECT_TRUE(config.weightsExist("nested/model"));
  home.write(manifestOf(""), "{}");
  EXPECT_TRUE(config.weightsExist(""));
  fs::create_symlink("../whisper-/manifest.json", home.prepare(manifestOf("linked")));
  EXPECT_TRUE(config.weightsExist("linked"));
}

TEST_F(Configuration, FindsNoWeightsThroughABrokenLinkOrACutName) {
  fs::create_symlink("nowhere", home.prepare(manifestOf("broken")));
  EXPECT_FALSE(config.weightsExist("broken"));
  home.write(manifestOf("cut"), "{}");
  EXPECT_FALSE(config.weightsExist(std::string("cut\0", 4)));
}

}  // namespace
}  // namespace voxtrel
