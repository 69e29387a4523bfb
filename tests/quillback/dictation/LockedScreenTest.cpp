#include <gmock/gmock.h>

#include "quillback/dictation/PrintedLines.h"
#include "support/DictationFixture.h"

namespace voxtrel::quillback {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class LockedScreen : public DictationFixture {
 protected:
  LockedScreen() { load(); }
  /// Time enough for the line after an unlock.
  void unlock() {
    lock_.locked = false;
    loop_.advance(Dictation::kUnlockCheck);
  }
};

TEST_F(LockedScreen, MakesNoRecordingAndSaysSoOnceWhenItIsUnlocked) {
  lock_.locked = true;
  for (int press = 0; press < 3; ++press) {
    dictation_->keyPressed();
    loop_.advance(1s);
    dictation_->keyReleased();
    loop_.advance(10s);
  }
  EXPECT_EQ(microphone_.openings, 0);
  EXPECT_THAT(output_.take(), IsEmpty());
  unlock();
  EXPECT_THAT(output_.take(), ElementsAre(kLockedLine));
  EXPECT_TRUE(loop_.isIdle());
}

TEST_F(LockedScreen, DropsARecordingThatRuns) {
  hold(1s);
  lock_.locked = true;
  loop_.advance(Dictation::kLockCheck);
  EXPECT_THAT(microphone_.captures, IsEmpty());
  EXPECT_EQ(recogniser_.utterance, nullptr);
  EXPECT_TRUE(store_.takes.empty());
  release();
  EXPECT_THAT(output_.take(), ElementsAre(kRecordingLine, kReadyLine));
  unlock();
  EXPECT_THAT(output_.take(), ElementsAre(kLockedLine));
  EXPECT_TRUE(loop_.isIdle());
}

TEST_F(LockedScreen, DropsARecordingThatEndsBeforeTheLockWasSeen) {
  hold(1s);
  lock_.locked = true;
  release();
  EXPECT_TRUE(store_.takes.empty());
  EXPECT_EQ(recogniser_.utterance, nullptr);
}

TEST_F(LockedScreen, HoldsWordsBackAndKeepsTheirRecordingForARetry) {
  hold(1s);
  release();
  output_.take();
  lock_.locked = true;
  understand("secret words");
  EXPECT_THAT(sink_.texts, IsEmpty());
  EXPECT_THAT(output_.take(), ElementsAre(kReadyLine));
  ASSERT_EQ(store_.takes.size(), 1U);
  EXPECT_EQ(store_.takes.front().state, test::FakeTakeStore::State::kept);
  unlock();
  EXPECT_THAT(output_.take(), ElementsAre(kLockedWordsLine));
  EXPECT_TRUE(loop_.isIdle());
}

TEST_F(LockedScreen, PromisesNoRetryOfWhatIsNotKept) {
  store_.isFull = true;
  hold(1s);
  release();
  lock_.locked = true;
  understand("secret words");
  output_.take();
  unlock();
  EXPECT_THAT(output_.take(), ElementsAre(kLockedLine));
}

TEST_F(LockedScreen, RecordsAgainOnceItIsUnlocked) {
  lock_.locked = true;
  dictation_->keyPressed();
  loop_.advance(1s);
  release();
  unlock();
  hold(1s);
  release();
  understand("hello");
  EXPECT_THAT(sink_.texts, ElementsAre("hello"));
}

}  // namespace
}  // namespace voxtrel::quillback
