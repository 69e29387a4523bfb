#include <gtest/gtest.h>

#include <vector>

#include "quillback/recognition/speech/PieceCutter.h"

namespace voxtrel::quillback {
namespace {

constexpr std::size_t kMaxFrames = speechFrames(24);

/// Adds frames; returns the pieces that ended, in order.
std::vector<std::vector<float>> add(PieceCutter& cutter, std::size_t count, float probability) {
  std::vector<std::vector<float>> pieces;
  for (std::size_t at = 0; at < count; ++at) {
    if (const auto piece = cutter.add(probability)) pieces.push_back(*piece);
  }
  return pieces;
}

TEST(PieceCutterTest, SpeechOfLessThanFifteenSecondsIsOnePiece) {
  PieceCutter cutter(kMaxFrames);
  EXPECT_TRUE(add(cutter, PieceCutter::kMinPieceFrames - 40, 1).empty());
  EXPECT_TRUE(add(cutter, 30, 0).empty());
  EXPECT_TRUE(PieceCutter::hasSpeech(cutter.rest()));
}

TEST(PieceCutterTest, APauseAfterFifteenSecondsEndsThePieceInItsMiddle) {
  PieceCutter cutter(kMaxFrames);
  EXPECT_TRUE(add(cutter, PieceCutter::kMinPieceFrames, 1).empty());
  EXPECT_TRUE(add(cutter, PieceCutter::kPauseFrames - 1, 0).empty());
  const auto pieces = add(cutter, 1, 0);
  ASSERT_EQ(pieces.size(), 1U);
  EXPECT_EQ(pieces[0].size(), PieceCutter::kMinPieceFrames + PieceCutter::kPauseFrames -
                                  PieceCutter::kPauseFrames / 2);
  EXPECT_TRUE(PieceCutter::hasSpeech(pieces[0]));
  EXPECT_FALSE(PieceCutter::hasSpeech(cutter.rest()));
}

TEST(PieceCutterTest, ShorterPausesEndNoPiece) {
  PieceCutter cutter(kMaxFrames);
  add(cutter, PieceCutter::kMinPieceFrames, 1);
  for (int i = 0; i < 5; ++i) {
    EXPECT_TRUE(add(cutter, PieceCutter::kPauseFrames - 1, 0).empty());
    EXPECT_TRUE(add(cutter, 10, 1).empty());
  }
}

TEST(PieceCutterTest, SpeechWithoutAPauseIsCutWhereItIsLeastProbable) {
  PieceCutter cutter(kMaxFrames);
  add(cutter, 600, 1);
  add(cutter, 6, 0.6F);
  const auto pieces = add(cutter, kMaxFrames - 606, 1);
  ASSERT_EQ(pieces.size(), 1U);
  EXPECT_EQ(pieces[0].size(), 603U);
}

TEST(PieceCutterTest, NoFrameIsLostOrDoubledWhateverIsSaid) {
  for (unsigned seed = 1; seed <= 50; ++seed) {
    PieceCutter cutter(kMaxFrames);
    unsigned state = seed;
    std::size_t ended = 0;
    std::size_t added = 0;
    for (int run = 0; run < 400; ++run) {
      state = state * 1664525U + 1013904223U;
      const std::size_t count = (state >> 16U) % 60;
      for (const auto& piece : add(cutter, count, static_cast<float>((state >> 8U) % 11) / 10)) {
        EXPECT_GT(piece.size(), 0U);
        EXPECT_LE(piece.size(), kMaxFrames);
        ended += piece.size();
      }
      added += count;
    }
    EXPECT_LE(ended, added);
    EXPECT_LE(added - ended, kMaxFrames);
  }
}

TEST(PieceCutterTest, AClickIsNoSpeech) {
  PieceCutter cutter(kMaxFrames);
  add(cutter, PieceCutter::kMinSpeechFrames - 1, 1);
  add(cutter, 1, 0);
  add(cutter, PieceCutter::kMinSpeechFrames - 1, 1);
  EXPECT_FALSE(PieceCutter::hasSpeech(cutter.rest()));
  add(cutter, 1, 1);
  EXPECT_TRUE(PieceCutter::hasSpeech(cutter.rest()));
}

TEST(PieceCutterTest, TheLongestPauseIsTheOneBetweenSpeech) {
  std::vector<float> frames(20, 0);
  EXPECT_EQ(PieceCutter::longestPause(frames), 0U);
  frames[5] = 1;
  EXPECT_EQ(PieceCutter::longestPause(frames), 0U);
  frames[6] = frames[9] = frames[16] = 1;
  EXPECT_EQ(PieceCutter::longestPause(frames), 13U);
  EXPECT_EQ(PieceCutter::voicedFrames(frames), 4U);
}

TEST(PieceCutterTest, AfterAResetThereIsNothing) {
  PieceCutter cutter(kMaxFrames);
  add(cutter, PieceCutter::kMinPieceFrames, 1);
  cutter.reset();
  EXPECT_FALSE(PieceCutter::hasSpeech(cutter.rest()));
  EXPECT_TRUE(add(cutter, PieceCutter::kPauseFrames, 0).empty());
}

}  // namespace
}  // namespace voxtrel::quillback
