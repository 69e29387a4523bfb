#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "quillback/model/commands/ModelTable.h"
#include "support/ModelFixture.h"

namespace voxtrel::quillback {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;
using testing::StartsWith;
using Json = nlohmann::json;

struct ModelTableTest : ModelFixture {
  ModelTableTest() {
    context.names.engine = "base";
    context.measureSpeed = [] { return 2.0; };
  }

  /// The table's line of a model.
  std::string lineOf(const std::string& name) {
    output.lines.clear();
    EXPECT_EQ(listModels(context, false, output), 0);
    for (const std::string& line : output.lines) {
      if (line.starts_with(name + " ")) return line;
    }
    return "";
  }
  Json json() {
    output.lines.clear();
    EXPECT_EQ(listModels(context, true, output), 0);
    EXPECT_THAT(output.lines, SizeIs(1));
    return Json::parse(output.lines.front());
  }
  static Json rowIn(const Json& json, const std::string& name) {
    for (const Json& row : json["models"]) {
      if (row["name"] == name) return row;
    }
    return {};
  }
};

TEST_F(ModelTableTest, HasALineForEachModelWithItsTimeOnThisMachine) {
  lineOf("base");
  EXPECT_EQ(output.lines[0], "Name                    Size   Memory  5 s of speech  Languages");
  EXPECT_EQ(output.lines[1],
            "tiny                   78 MB   280 MB          0.7 s  99 languages           advised");
  EXPECT_EQ(output.lines[4], "base.en               148 MB   390 MB          1.2 s  English");
  EXPECT_EQ(lineOf("large-v3"),
            "large-v3             3096 MB  3500 MB           92 s  99 languages");
  EXPECT_THAT(lineOf("parakeet-v3-q4_0"), HasSubstr("25 European languages"));
}

TEST_F(ModelTableTest, MarksWhatIsHereInUseAndAdvised) {
  EXPECT_THAT(lineOf("base"), HasSubstr("  in use"));
  put("base");
  EXPECT_THAT(lineOf("base"), HasSubstr("  here, in use"));
  context.measureSpeed = [] { return 1.0; };
  EXPECT_THAT(lineOf("base"), HasSubstr("  here, in use, advised"));
}

TEST_F(ModelTableTest, NamesLicences) {
  lineOf("base");
  EXPECT_THAT(output.lines, Contains("parakeet-v3-q4_0: CC-BY-4.0, by NVIDIA."));
}

TEST_F(ModelTableTest, AnUnknownTimeIsADash) {
  context.measureSpeed = nullptr;
  EXPECT_EQ(lineOf("base"),
            "base                  148 MB   390 MB              -  99 languages           in use, "
            "advised");
}

TEST_F(ModelTableTest, SaysIfTheSettingsNameAnUnknownModel) {
  context.names.engine = "huge";
  lineOf("base");
  EXPECT_THAT(output.lines, Contains("The settings choose huge, which is not known."));
}

TEST_F(ModelTableTest, ListsTheUsersOwnModels) {
  put("mine", true);
  context.names.engine = "mine";
  EXPECT_EQ(lineOf("mine"),
            "mine                    1 MB        -              -  -                      here, in "
            "use, your own");
}

TEST_F(ModelTableTest, BeginsWithWhatComputes) {
  context.runsOn = "Whisper 1.9.3, AVX2.";
  lineOf("base");
  EXPECT_EQ(output.lines.front(), "Whisper 1.9.3, AVX2.");
  EXPECT_EQ(json()["runs_on"], "Whisper 1.9.3, AVX2.");
}

TEST_F(ModelTableTest, IsOneLineOfJsonForPrograms) {
  put("base");
  const Json all = json();
  EXPECT_EQ(all["in_use"], "base");
  EXPECT_EQ(all["models"].size(), 15U);
  EXPECT_EQ(rowIn(all, "base"), Json::parse(R"({"name": "base", "size": 147951465,
      "languages": "99 languages", "memory": 390000000, "seconds_for_5_s_of_speech": 1.2,
      "licence": null, "here": true, "in_use": true, "advised": false, "custom": false})"));
  EXPECT_EQ(rowIn(all, "parakeet-v3-q8_0")["licence"], "CC-BY-4.0, by NVIDIA");
  context.measureSpeed = nullptr;
  EXPECT_TRUE(rowIn(json(), "base")["seconds_for_5_s_of_speech"].is_null());
}

TEST_F(ModelTableTest, ABuildWithoutWhisperSaysSoInOneLine) {
  context.hasWhisper = false;
  EXPECT_EQ(listModels(context, false, output), 0);
  EXPECT_THAT(output.lines, ElementsAre(StartsWith("This build has only its embedded recogniser")));
  EXPECT_EQ(json()["whisper"], false);
  EXPECT_TRUE(json()["models"].empty());
}

}  // namespace
}  // namespace voxtrel::quillback
