#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <filesystem>
#include <fstream>
#include <string>

#include "quillback/audio/WavFile.h"
#include "support/WavBytes.h"
#include "support/WholeWav.h"

namespace voxtrel::quillback {
namespace {

using test::parseWav;
using test::readWav;
using test::WavBytes;
using test::WavSound;
using testing::ElementsAre;
using testing::FloatEq;
using testing::HasSubstr;
using testing::IsEmpty;

TEST(WavFile, SixteenBitsGiveFractionsOfOne) {
  const auto bytes = WavBytes()
                         .riff()
                         .format(1, 1, 16000, 16)
                         .data(6)
                         .number(0, 2)
                         .number(0x4000, 2)
                         .number(0x8000, 2)
                         .bytes();
  const WavSound wav = parseWav(bytes).value();
  EXPECT_EQ(wav.note, "");
  EXPECT_EQ(wav.rateHz, 16000);
  EXPECT_THAT(wav.samples, ElementsAre(0.0F, 0.5F, -1.0F));
}

TEST(WavFile, AWrittenHeaderIsAsItIsRead) {
  const auto expected = WavBytes()
                            .text("RIFF")
                            .number(36 + 6, 4)
                            .text("WAVE")
                            .format(1, 1, 16000, 16)
                            .data(6)
                            .bytes();
  const auto header = wavHeader(3);
  EXPECT_EQ(std::vector(header.begin(), header.end()), expected);
}

TEST(WavFile, EightBitsHaveTheirZeroInTheMiddle) {
  const auto bytes = WavBytes().riff().format(1, 1, 8000, 8).data(3).number(0xC08000, 3).bytes();
  EXPECT_THAT(parseWav(bytes).value().samples, ElementsAre(-1.0F, 0.0F, 0.5F));
}

TEST(WavFile, TwentyFourAndThirtyTwoBitsKeepTheirSign) {
  const auto narrow = WavBytes()
                          .riff()
                          .format(1, 1, 48000, 24)
                          .data(6)
                          .number(0x400000, 3)
                          .number(0xC00000, 3)
                          .bytes();
  EXPECT_THAT(parseWav(narrow).value().samples, ElementsAre(0.5F, -0.5F));
  const auto wide = WavBytes()
                        .riff()
                        .format(1, 1, 48000, 32)
                        .data(8)
                        .number(0x40000000, 4)
                        .number(0xC0000000, 4)
                        .bytes();
  EXPECT_THAT(parseWav(wide).value().samples, ElementsAre(0.5F, -0.5F));
}

TEST(WavFile, FloatingPointIsClampedToOne) {
  const auto single = WavBytes()
                          .riff()
                          .format(3, 1, 44100, 32)
                          .data(16)
                          .number(std::bit_cast<std::uint32_t>(0.25F), 4)
                          .number(std::bit_cast<std::uint32_t>(7.0F), 4)
                          .number(0x7FC00000, 4)  // NaN
                          .number(0xFF800000, 4)  // minus infinity
                          .bytes();
  EXPECT_THAT(parseWav(single).value().samples, ElementsAre(0.25F, 1.0F, 0.0F, 0.0F));
  const auto twice = WavBytes()
                         .riff()
                         .format(3, 1, 44100, 64)
                         .data(8)
                         .number(std::bit_cast<std::uint64_t>(-0.25), 8)
                         .bytes();
  EXPECT_THAT(parseWav(twice).value().samples, ElementsAre(-0.25F));
}

TEST(WavFile, ChannelsAreAveraged) {
  const auto bytes = WavBytes()
                         .riff()
                         .format(1, 2, 16000, 16)
                         .data(8)
                         .number(0x4000, 2)
                         .number(0x2000, 2)
                         .number(0x4000, 2)
                         .number(0xC000, 2)
                         .bytes();
  EXPECT_THAT(parseWav(bytes).value().samples, ElementsAre(FloatEq(0.375F), 0.0F));
}

TEST(WavFile, TheExtensibleHeaderGivesTheEncodingInItsSubformat) {
  const auto bytes = WavBytes()
                         .riff()
                         .extensibleFormat(3, 1, 96000, 32)
                         .data(4)
                         .number(std::bit_cast<std::uint32_t>(0.5F), 4)
                         .bytes();
  const WavSound wav = parseWav(bytes).value();
  EXPECT_EQ(wav.rateHz, 96000);
  EXPECT_THAT(wav.samples, ElementsAre(0.5F));
}

TEST(WavFile, UnknownChunksOfOddSizeAreSkippedWithTheirPadding) {
  const auto bytes = WavBytes()
                         .riff()
                         .text("LIST")
                         .number(3, 4)
                         .text("abc")
                         .number(0, 1)
                         .format(1, 1, 16000, 16)
                         .text("fact")
                         .number(4, 4)
                         .number(1, 4)
                         .data(2)
                         .number(0x4000, 2)
                         .text("LIST")
                         .number(2, 4)
                         .text("yz")
                         .bytes();
  const WavSound wav = parseWav(bytes).value();
  EXPECT_THAT(wav.samples, ElementsAre(0.5F));
}

TEST(WavFile, ALengthThatWasNeverFilledInMeansAllSamples) {
  for (const std::uint32_t stated : {0U, 0xFFFFFFFFU}) {
    const auto bytes = WavBytes()
                           .riff()
                           .format(1, 1, 16000, 16)
                           .data(stated)
                           .number(0x4000, 2)
                           .number(0xC000, 2)
                           .bytes();
    const WavSound wav = parseWav(bytes).value();
    EXPECT_THAT(wav.samples, ElementsAre(0.5F, -0.5F));
    EXPECT_THAT(wav.note, HasSubstr("does not say how long"));
  }
}

TEST(WavFile, ACutFileGivesItsCompleteFrames) {
  const auto bytes = WavBytes()
                         .riff()
                         .format(1, 1, 16000, 16)
                         .data(1000)
                         .number(0x4000, 2)
                         .number(0x7F, 1)
                         .bytes();
  const WavSound wav = parseWav(bytes).value();
  EXPECT_THAT(wav.samples, ElementsAre(0.5F));
  EXPECT_THAT(wav.note, HasSubstr("cut short"));
}

TEST(WavFile, AnEmptyFileOfTheRightKindHasNoSamplesAndNoError) {
  const auto bytes = WavBytes().riff().format(1, 1, 16000, 16).data(0).bytes();
  const WavSound wav = parseWav(bytes).value();
  EXPECT_EQ(wav.note, "");
  EXPECT_THAT(wav.samples, IsEmpty());
}

TEST(WavFile, EveryProblemHasItsMessage) {
  const auto errorOf = [](const WavBytes& file) { return parseWav(file.bytes()).error(); };
  EXPECT_EQ(errorOf(WavBytes()), "it is not a WAV file");
  EXPECT_EQ(errorOf(WavBytes().text("OggS and so on, at length")), "it is not a WAV file");
  EXPECT_EQ(errorOf(WavBytes().riff()), "it holds no samples");
  EXPECT_EQ(errorOf(WavBytes().riff().format(1, 1, 16000, 16)), "it holds no samples");
  EXPECT_EQ(errorOf(WavBytes().riff().data(2).number(1, 2)),
            "its samples come before their description");
  EXPECT_EQ(errorOf(WavBytes().riff().text("fmt ").number(4, 4).number(1, 4)),
            "its header is cut short");
  EXPECT_THAT(errorOf(WavBytes().riff().format(85, 1, 16000, 16)), HasSubstr("encoding 85"));
  EXPECT_THAT(errorOf(WavBytes().riff().format(1, 1, 16000, 12)), HasSubstr("12 bits"));
  EXPECT_EQ(errorOf(WavBytes().riff().format(1, 0, 16000, 16)), "it has 0 channels");
  EXPECT_EQ(errorOf(WavBytes().riff().format(1, 33, 16000, 16)), "it has 33 channels");
  EXPECT_EQ(errorOf(WavBytes().riff().format(1, 1, 999, 16)), "its sample rate is 999 Hz");
  EXPECT_EQ(errorOf(WavBytes().riff().format(1, 1, 384001, 16)), "its sample rate is 384001 Hz");
  EXPECT_EQ(errorOf(WavBytes()
                        .riff()
                        .text("fmt ")
                        .number(16, 4)
                        .number(0x20001, 4)
                        .number(16000, 4)
                        .number(0, 4)
                        .number(2, 2)
                        .number(16, 2)),
            "its header contradicts itself");
}

TEST(WavFile, AnUnreadableFileDiffersFromOneThatIsNotWav) {
  const WavError missing = readWav("/nowhere/at/all.wav").error();
  EXPECT_EQ(missing.kind, WavError::Kind::unreadable);
  EXPECT_EQ(missing.message, "No such file or directory");
  const WavError folder = readWav("/").error();
  EXPECT_EQ(folder.kind, WavError::Kind::unreadable);
  EXPECT_EQ(folder.message, "Is a directory");
  const WavError empty = readWav("/dev/null").error();
  EXPECT_EQ(empty.kind, WavError::Kind::notWav);
  EXPECT_EQ(empty.message, "it is not a WAV file");
}

}  // namespace
}  // namespace voxtrel::quillback
