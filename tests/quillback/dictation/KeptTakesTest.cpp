#include <gmock/gmock.h>

#include "support/DictationFixture.h"

namespace voxtrel::quillback {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using testing::ElementsAre;
using testing::IsEmpty;
using State = test::FakeTakeStore::State;

constexpr std::size_t kSecond = kSampleRateHz;

class KeptTakesTest : public DictationFixture {};

TEST_F(KeptTakesTest, ARecordingIsKeptBeforeItIsRecognisedAndUntilItsWordsAreInserted) {
  load();
  hold(seconds(2));
  EXPECT_THAT(store_.takes, IsEmpty());
  release();
  ASSERT_EQ(store_.takes.size(), 1U);
  EXPECT_EQ(store_.takes[0].samples.size(), 2 * kSecond);
  EXPECT_EQ(store_.takes[0].samples, recogniser_.utterance->fed);
  EXPECT_EQ(store_.takes[0].state, State::kept);
  sink_.onInsert = [this] { EXPECT_EQ(store_.takes[0].state, State::kept); };
  understand("yes");
  EXPECT_THAT(sink_.texts, ElementsAre("yes"));
  EXPECT_EQ(store_.takes[0].state, State::delivered);
}

TEST_F(KeptTakesTest, ARecordingStaysUntilAllOfItsTextIsInserted) {
  sink_.isSlow = true;
  load();
  hold(seconds(1));
  release();
  understand("yes");
  EXPECT_THAT(sink_.texts, ElementsAre("yes"));
  EXPECT_EQ(store_.takes[0].state, State::kept);
  hold(seconds(1));
  release();
  understand("no");
  sink_.waiting.at(0)();
  EXPECT_EQ(store_.takes[0].state, State::delivered);
  EXPECT_EQ(store_.takes[1].state, State::kept);
}

TEST_F(KeptTakesTest, QueuedRecordingsAreKeptOneByOne) {
  load();
  for (const int length : {1, 2, 3}) {
    hold(seconds(length));
    release();
  }
  ASSERT_EQ(store_.takes.size(), 3U);
  understand("one");
  EXPECT_EQ(recogniser_.utterance->fed, store_.takes[1].samples);
  EXPECT_EQ(store_.takes[1].samples.size(), 2 * kSecond);
  EXPECT_EQ(store_.takes[0].state, State::delivered);
  EXPECT_EQ(store_.takes[1].state, State::kept);
  understand("two");
  EXPECT_EQ(recogniser_.utterance->fed.size(), 3 * kSecond);
  EXPECT_EQ(store_.takes[2].state, State::kept);
}

TEST_F(KeptTakesTest, ARecordingThatBeganInTheQueueIsKeptWhole) {
  load();
  hold(seconds(1));
  release();
  hold(seconds(1), 4000);
  understand("one");
  speak(seconds(1), 5000);
  release();
  ASSERT_EQ(store_.takes.size(), 2U);
  EXPECT_EQ(store_.takes[1].samples.size(), 2 * kSecond);
  EXPECT_EQ(store_.takes[1].samples, recogniser_.utterance->fed);
}

TEST_F(KeptTakesTest, ARecordingWithoutWordsStays) {
  load();
  hold(seconds(1));
  release();
  understand(" ");
  EXPECT_EQ(store_.takes[0].state, State::gaveNoWords);
}

TEST_F(KeptTakesTest, DroppedAndSilentRecordingsAreNotKept) {
  load();
  hold(seconds(1));
  dictation_->keyCancelled();
  hold(milliseconds(100));
  release();
  hold(seconds(1), 0);
  release();
  EXPECT_THAT(store_.takes, IsEmpty());
}

TEST_F(KeptTakesTest, TheEndOfTheEngineLeavesWhatWasNotDelivered) {
  load();
  hold(seconds(1));
  release();
  dictation_.reset();
  EXPECT_EQ(store_.takes[0].state, State::kept);
}

TEST_F(KeptTakesTest, WhatCannotBeKeptIsRecognisedAllTheSame) {
  store_.isFull = true;
  load();
  hold(seconds(1));
  release();
  understand("yes");
  hold(seconds(1));
  release();
  understand("");
  EXPECT_THAT(sink_.texts, ElementsAre("yes"));
}

TEST_F(KeptTakesTest, InvisibleCharactersAreNeitherPrintedNorInserted) {
  load();
  hold(seconds(1));
  release();
  output_.take();
  understand("\u202E yes\u200B ");
  EXPECT_EQ(output_.take()[0], "[gpu-decode] text: \"yes\"");
  EXPECT_THAT(sink_.texts, ElementsAre("yes"));
}

TEST_F(KeptTakesTest, InvalidBytesAroundAnInvisibleCharacterMakeUpNoOther) {
  load();
  hold(seconds(1));
  release();
  understand("a\xE2\x80\u200B\xAE b");  // E2 80 AE turns the direction of writing
  EXPECT_THAT(sink_.texts, ElementsAre("a\uFFFD\uFFFD\uFFFD b"));
}

}  // namespace
}  // namespace voxtrel::quillback
