#include <gtest/gtest.h>

#include <string>

#include "quillback/model/Manifest.h"

namespace voxtrel::quillback {
namespace {

const std::string kHash = "64d182b440b98d5203c4f9bd541544d84c605196c4f7b845dfa11fb23594d1e2";

Manifest whisper() {
  return {"large-v3", "whisper", {{"ggml-large-v3.bin", 3095033483, kHash}}, "quillback 0.1.0"};
}

/// The text of `whisper()` with `from` replaced; it must contain `from`.
std::string changed(const std::string& from, const std::string& to) {
  std::string text = formatManifest(whisper());
  const std::size_t at = text.find(from);
  EXPECT_NE(at, std::string::npos) << from;
  return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

std::string faultOf(const std::string& text) {
  const auto parsed = parseManifest(text);
  return parsed ? "none" : parsed.error();
}

TEST(ManifestTest, AManifestIsReadAsItWasWritten) {
  const auto parsed = parseManifest(formatManifest(whisper()));
  ASSERT_TRUE(parsed);
  EXPECT_EQ(*parsed, whisper());

  const Manifest embedded{"large-v3", "pocketsphinx", {}, "quillback 0.1.0"};
  const auto other = parseManifest(formatManifest(embedded));
  ASSERT_TRUE(other);
  EXPECT_EQ(*other, embedded);
}

TEST(ManifestTest, AParakeetModelIsReadAsItWasWritten) {
  Manifest parakeet = whisper();
  parakeet.recogniser = kParakeet;
  parakeet.isCustom = true;
  const auto parsed = parseManifest(formatManifest(parakeet));
  ASSERT_TRUE(parsed);
  EXPECT_EQ(*parsed, parakeet);
  EXPECT_EQ(familyOf(parsed->recogniser), ModelFamily::parakeet);
}

TEST(ManifestTest, AnotherModelCanBeNamedInPlaceOfWeights) {
  const Manifest note{"large-v3", "pocketsphinx", {}, "quillback 0.1.0", "base"};
  const auto parsed = parseManifest(formatManifest(note));
  ASSERT_TRUE(parsed);
  EXPECT_EQ(*parsed, note);
  EXPECT_EQ(faultOf(changed("\"format\"", "\"chosen\": \"base\", \"format\"")),
            "it names weights and another model");
}

TEST(ManifestTest, OptionalMembersHaveTheirOwnKind) {
  for (const char* member : {R"("chosen": 7)", R"("chosen": "../x")", R"("chosen": "")",
                             R"("custom": "yes")", R"("custom": null)"}) {
    EXPECT_EQ(faultOf(changed("\"format\"", std::string(member) + ", \"format\"")),
              "it has a member of a wrong kind")
        << member;
  }
  EXPECT_EQ(faultOf(changed("\"format\"", "\"custom\": false, \"format\"")), "none");
}

TEST(ManifestTest, AModelNameIsPlain) {
  for (const char* name : {"base", "large-v3-q5_0", "tiny.en", "A", "0", "-x"}) {
    EXPECT_TRUE(isModelName(name)) << name;
  }
  EXPECT_TRUE(isModelName(std::string(64, 'x')));
  EXPECT_FALSE(isModelName(std::string(65, 'x')));
  for (const char* name : {"", ".", "..", ".x", "a/b", "a b", "\xc3\xbc", "a\n", "a\"", "a\\"}) {
    EXPECT_FALSE(isModelName(name)) << name;
  }
}

TEST(ManifestTest, UnknownMembersAreIgnored) {
  EXPECT_EQ(faultOf(changed("\"format\"", "\"later\": [{}], \"format\"")), "none");
}

TEST(ManifestTest, OnlyAnObjectOfTheKnownFormatIsAccepted) {
  for (const char* text : {"", " ", "{", "[]", "null", "7", "\"x\"", "{}x", "{\"format\": 1,}",
                           "{\"format\": \"\xff\"}"}) {
    EXPECT_EQ(faultOf(text), "it is not a JSON object") << text;
  }
  EXPECT_EQ(faultOf("{}"), "it has an unknown format");
  for (const char* format : {"2", "0", "-1", "1.0", "\"1\"", "true", "null", "[1]"}) {
    EXPECT_EQ(faultOf(changed("\"format\": 1", "\"format\": " + std::string(format))),
              "it has an unknown format");
  }
}

TEST(ManifestTest, AMissingMemberOrOneOfAnotherTypeIsRefused) {
  for (const char* member : {"model", "recogniser", "written_by", "files"}) {
    const std::string name = "\"" + std::string(member) + "\"";
    EXPECT_EQ(faultOf(changed(name, "\"other\"")), "it lacks a member") << member;
    EXPECT_EQ(faultOf(changed(name + ":", name + ": 7, \"other\":")), "it lacks a member");
  }
}

TEST(ManifestTest, TheFilesMustFitTheRecogniser) {
  EXPECT_EQ(faultOf(changed("\"whisper\"", "\"parrot\"")), "it names an unknown recogniser");
  EXPECT_EQ(faultOf(changed("\"whisper\"", "\"pocketsphinx\"")),
            "it names weights that its recogniser does not have");
  Manifest none = whisper();
  none.files.clear();
  EXPECT_EQ(faultOf(formatManifest(none)), "it names no weights");
}

TEST(ManifestTest, FileNamesAreNotPaths) {
  for (const char* name : {"", ".", "..", "../x", "a/b", "/etc/passwd", "a\\u0000b", "a\\nb"}) {
    EXPECT_EQ(faultOf(changed("ggml-large-v3.bin", name)), "it describes a file wrongly") << name;
  }
  EXPECT_EQ(faultOf(changed("ggml-large-v3.bin", std::string(201, 'x'))),
            "it describes a file wrongly");
  EXPECT_EQ(faultOf(changed("ggml-large-v3.bin", "..bin")), "none");
}

TEST(ManifestTest, SizesAreIntegersAndHashesComplete) {
  for (const char* size : {"-1", "1.5", "3e9", "\"7\"", "18446744073709551616", "null"}) {
    EXPECT_EQ(faultOf(changed("3095033483", size)), "it describes a file wrongly") << size;
  }
  EXPECT_EQ(faultOf(changed("3095033483", "18446744073709551615")), "none");
  EXPECT_EQ(faultOf(changed(kHash, kHash.substr(1))), "it describes a file wrongly");
  EXPECT_EQ(faultOf(changed("64d182", "64D182")), "it describes a file wrongly");
}

TEST(ManifestTest, AHugeManifestIsRefused) {
  EXPECT_EQ(faultOf(formatManifest(whisper()) + std::string(kMaxManifestBytes, ' ')),
            "it is too long");
  EXPECT_EQ(faultOf(std::string(kMaxManifestBytes, '[')), "it is not a JSON object");
  Manifest many = whisper();
  many.files.assign(65, many.files.front());
  EXPECT_EQ(faultOf(formatManifest(many)), "it names too many files");
}

TEST(ManifestTest, AModelNameThatIsNotUtf8IsWritten) {
  Manifest odd = whisper();
  odd.model = "\xff";
  EXPECT_EQ(faultOf(formatManifest(odd)), "none");
}

}  // namespace
}  // namespace voxtrel::quillback
