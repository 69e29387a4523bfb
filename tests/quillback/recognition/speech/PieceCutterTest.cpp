#include <gtest/gtest.h>

#include <vector>

#include "quillback/recognition/speech/PieceCutter.h"

namespace voxtrel::quillback {
namespace {

constexpr std::size_t kMaxFrames = speechFrames(24);

/// Adds frames; returns the pieces that ended, in order.
std::vector<PieceCutter::Piece> add(PieceCutter& cutter, std::size_t count, float probability) {
  std::vector<PieceCutter::Piece> pieces;
  for (std::size_t at = 0; at < count; ++at) {
    if (const auto piece = cutter.add(probability)) pieces.push_back(*piece);
  }
  return pieces;
}

TEST(PieceCutterTest, SpeechOfLessThanFifteenSecondsIsOnePiece) {
  PieceCutter cutter(kMaxFrames);
  EXPECT_TRUE(add(cutter, PieceCutter::kMinPieceFrames - 40, 1).empty());
  EXPECT_TRUE(add(cutter, 30, 0).empty());
  EXPECT_TRUE(cutter.rest().hasSpeech);
}

TEST(PieceCutterTest, APauseAfterFifteenSecondsEndsThePieceInItsMiddle) {
  PieceCutter cutter(kMaxFrames);
  EXPECT_TRUE(add(cutter, PieceCutter::kMinPieceFrames, 1).empty());
  EXPECT_TRUE(add(cutter, PieceCutter::kPauseFrames - 1, 0).empty());
  const auto pieces = add(cutter, 1, 0);
  ASSERT_EQ(pieces.size(), 1U);
  EXPECT_EQ(pieces[0].frames, PieceCutter::kMinPieceFrames + PieceCutter::kPauseFrames -
                                  PieceCutter::kPauseFrames / 2);
  EXPECT_TRUE(pieces[0].hasSpeech);
  EXPECT_FALSE(cutter.rest().hasSpeech);
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
  EXPECT_EQ(pieces[0].frames, 603U);
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
        EXPECT_GT(piece.frames, 0U);
        EXPECT_LE(piece.frames, kMaxFrames);
        ended += piece.frames;
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
  EXPECT_FALSE(cutter.rest().hasSpeech);
  add(cutter, 1, 1);
  EXPECT_TRUE(cutter.rest().hasSpeech);
}

TEST(PieceCutterTest, AfterAResetThereIsNothing) {
  PieceCutter cutter(kMaxFrames);
  add(cutter, PieceCutter::kMinPieceFrames, 1);
  cutter.reset();
  EXPECT_FALSE(cutter.rest().hasSpeech);
  EXPECT_TRUE(add(cutter, PieceCutter::kPauseFrames, 0).empty());
}

}  // namespace
}  // namespace voxtrel::quillback
