#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>

#include "common/settings/TextFile.h"
#include "quillback/model/ModelFolder.h"
#include "quillback/model/ModelStore.h"
#include "support/ModelFixture.h"

namespace voxtrel::quillback {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;
using testing::UnorderedElementsAre;

namespace fs = std::filesystem;

struct ModelCommandsTest : ModelFixture {
  int use(const std::string& name) {
    output.lines.clear();
    return useModel(context, name, output);
  }
  int remove(const std::string& name) {
    output.lines.clear();
    return removeModel(context, name, output);
  }
  std::string settings() const { return readTextFile(config().configPath()).value_or("none"); }
  /// The model that the manifest of the window's folder names.
  std::string noted() const {
    const auto manifest = readManifest(context.home, "large-v3");
    return manifest ? manifest->chosen : "no manifest";
  }
  std::vector<std::string> filesIn(const std::string& model) const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder(model))) {
      names.push_back(entry.path().filename());
    }
    return names;
  }
};

TEST_F(ModelCommandsTest, UseWritesTheChoiceAndSaysWhatToRun) {
  EXPECT_EQ(use("base"), 0);
  EXPECT_EQ(settings(), "[engine]\nmodel = \"base\"\n");
  EXPECT_THAT(output.lines,
              ElementsAre("The engine uses base from its next start.",
                          "Its weights are not here. Run \"quillback setup --model base\"."));
}

TEST_F(ModelCommandsTest, UseOfAModelThatIsHereSaysNoMore) {
  put("base");
  EXPECT_EQ(use("base"), 0);
  EXPECT_THAT(output.lines, ElementsAre("The engine uses base from its next start."));
}

TEST_F(ModelCommandsTest, UseKeepsTheOtherSettingsTheirPermissionsAndALink) {
  const fs::path real = home.write("dotfiles/config.toml", "# mine\n[audio]\nhotkey = 'f8'\n");
  ASSERT_EQ(::chmod(real.c_str(), 0600), 0);
  fs::create_symlink(real, home.prepare(".config/quillback/config.toml"));
  EXPECT_EQ(use("tiny"), 0);
  EXPECT_EQ(settings(), "# mine\n[audio]\nhotkey = 'f8'\n\n[engine]\nmodel = \"tiny\"\n");
  EXPECT_TRUE(fs::is_symlink(config().configPath()));
  EXPECT_EQ(fs::status(real).permissions(), fs::perms::owner_read | fs::perms::owner_write);
  EXPECT_FALSE(fs::exists(real.string() + ".tmp"));
}

TEST_F(ModelCommandsTest, UseRefusesUnknownNamesAndChangesNothing) {
  for (const char* name : {"huge", "", "../base", "advised"}) {
    EXPECT_EQ(use(name), 2) << name;
    EXPECT_THAT(output.lines, ElementsAre(StartsWith("Unknown model \"" + std::string(name) +
                                                     "\". Known models: tiny ")));
  }
  EXPECT_EQ(settings(), "none");
}

TEST_F(ModelCommandsTest, UseKnowsTheUsersOwnModels) {
  EXPECT_EQ(use("mine"), 2);
  put("mine", true);
  EXPECT_EQ(use("mine"), 0);
  EXPECT_EQ(settings(), "[engine]\nmodel = \"mine\"\n");
}

TEST_F(ModelCommandsTest, UseLeavesSettingsThatItCannotChange) {
  home.write(".config/quillback/config.toml", "[engine\n");
  EXPECT_EQ(use("base"), 6);
  EXPECT_EQ(settings(), "[engine\n");
  EXPECT_THAT(output.lines, ElementsAre(HasSubstr("config.toml stay as they are: it is not TOML")));

  home.write(".config/quillback/config.toml", "\xff");
  EXPECT_EQ(use("base"), 6);
  EXPECT_THAT(output.lines, ElementsAre(HasSubstr("it is not UTF-8 text")));

  fs::remove_all(home.path() / ".config");
  home.write(".config", "a file where a folder should be");
  EXPECT_EQ(use("base"), 6);
}

TEST_F(ModelCommandsTest, TheWindowFindsTheChosenModelOnlyWhileThatIsHere) {
  put("base");
  EXPECT_EQ(use("base"), 0);
  EXPECT_EQ(noted(), "base");
  EXPECT_EQ(use("tiny"), 0);
  EXPECT_EQ(noted(), "no manifest");
  EXPECT_EQ(use("base"), 0);
  EXPECT_EQ(noted(), "base");
  EXPECT_EQ(use("large-v3"), 0);
  EXPECT_EQ(noted(), "no manifest");
}

TEST_F(ModelCommandsTest, CompleteWeightsOfTheWindowsModelKeepTheirManifest) {
  put("base");
  put("large-v3");
  EXPECT_EQ(use("base"), 0);
  EXPECT_EQ(noted(), "");
  EXPECT_TRUE(inspectStore(context.home, "large-v3"));
}

TEST_F(ModelCommandsTest, WhereNothingIsHereUseMakesNoFolders) {
  EXPECT_EQ(use("base"), 0);
  EXPECT_FALSE(fs::exists(home.path() / ".local"));
}

TEST_F(ModelCommandsTest, RemoveTakesWhatSetupHasMadeAndCountsItsBytes) {
  put("base");
  write("base", "ggml-base.bin.part", "123");
  write("base", "ggml-base.bin.part.json", "{}");
  write("base", "ggml-silero-v6.2.0.bin.part", "1");
  write("base", "setup.lock", "");
  write("base", "notes.txt", "the user's own");
  EXPECT_EQ(remove("base"), 0);
  EXPECT_THAT(output.lines, ElementsAre("Removed base: 18 bytes (1 MB)."));
  EXPECT_THAT(filesIn("base"), UnorderedElementsAre("setup.lock", "notes.txt"));
  EXPECT_EQ(remove("base"), 0);
  EXPECT_THAT(output.lines, ElementsAre("There is nothing of base to remove."));
}

TEST_F(ModelCommandsTest, RemoveTakesFilesWhoseManifestIsDamaged) {
  put("base");
  write("base", "manifest.json", "{");
  EXPECT_EQ(remove("base"), 0);
  EXPECT_THAT(filesIn("base"), ElementsAre("setup.lock"));
}

TEST_F(ModelCommandsTest, RemoveTakesTheUsersOwnModel) {
  put("mine", true);
  EXPECT_EQ(remove("mine"), 0);
  EXPECT_THAT(filesIn("mine"), ElementsAre("setup.lock"));
  EXPECT_EQ(use("mine"), 2);
}

TEST_F(ModelCommandsTest, RemoveRefusesTheModelInUse) {
  put("large-v3");
  EXPECT_EQ(remove("large-v3"), 2);
  EXPECT_THAT(output.lines, ElementsAre("large-v3 is in use. Choose another model first, with "
                                        "\"quillback use NAME\"."));
  context.names.engine = "base";
  put("base");
  EXPECT_EQ(remove("base"), 2);
  EXPECT_TRUE(inspectStore(context.home, "base"));
}

TEST_F(ModelCommandsTest, RemoveOfTheWindowsModelLeavesTheNameOfTheChosenOne) {
  context.names.engine = "base";
  put("base");
  put("large-v3");
  EXPECT_EQ(remove("large-v3"), 0);
  EXPECT_EQ(noted(), "base");
  EXPECT_FALSE(fs::exists(folder("large-v3") + "/ggml-large-v3.bin"));
}

TEST_F(ModelCommandsTest, RemoveRefusesUnknownNames) {
  for (const char* name : {"huge", "", "..", "../../.."}) {
    EXPECT_EQ(remove(name), 2) << name;
    EXPECT_THAT(output.lines, ElementsAre(StartsWith("Unknown model")));
  }
}

TEST_F(ModelCommandsTest, RemoveDoesNotDisturbARunningSetup) {
  put("base");
  ModelFolder running(context.home, "base");
  ASSERT_TRUE(running.tryLock());
  EXPECT_EQ(remove("base"), 8);
  EXPECT_THAT(output.lines, ElementsAre("Setup of base is running. Wait for its end."));
  EXPECT_TRUE(inspectStore(context.home, "base"));
}

TEST_F(ModelCommandsTest, TheAdviceComesFromTheMeasuredSpeed) {
  context.measureSpeed = [] { return 3.0; };
  EXPECT_EQ(adviseModel(context, output), "tiny");
  EXPECT_THAT(output.lines, ElementsAre("The advised model is tiny."));
}

TEST_F(ModelCommandsTest, WithoutAMeasurementTheAdviceSaysSo) {
  EXPECT_EQ(adviseModel(context, output), "base");
  EXPECT_THAT(output.lines, ElementsAre(HasSubstr("not measured")));
  context.measureSpeed = [] { return std::nullopt; };
  EXPECT_EQ(adviseModel(context, output), "base");
}

}  // namespace
}  // namespace voxtrel::quillback
