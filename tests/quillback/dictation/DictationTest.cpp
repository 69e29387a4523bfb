#include <gmock/gmock.h>

#include "support/DictationFixture.h"

namespace voxtrel::quillback {
namespace {

using std::chrono::milliseconds;
using std::chrono::minutes;
using std::chrono::seconds;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::size_t kSecond = kSampleRateHz;

class DictationTest : public DictationFixture {};

TEST_F(DictationTest, ReadyIsPrintedOnceTheModelIsLoaded) {
  findKeyAndMicrophone();
  EXPECT_THAT(output_.take(), IsEmpty());
  dictation_->modelLoaded(recogniser_);
  EXPECT_THAT(output_.take(), ElementsAre("Ready."));
}

TEST_F(DictationTest, ReadyWaitsForTheKey) {
  dictation_->microphoneFound();
  dictation_->modelLoaded(recogniser_);
  EXPECT_THAT(output_.take(), IsEmpty());
  dictation_->keySeen();
  EXPECT_THAT(output_.take(), ElementsAre("Ready."));
  dictation_->keySeen();
  EXPECT_THAT(output_.take(), IsEmpty());
}

TEST_F(DictationTest, ReadyWaitsForTheMicrophone) {
  dictation_->keySeen();
  dictation_->modelLoaded(recogniser_);
  EXPECT_THAT(output_.take(), IsEmpty());
  dictation_->microphoneFound();
  EXPECT_THAT(output_.take(), ElementsAre("Ready."));
  dictation_->microphoneFound();
  EXPECT_THAT(output_.take(), IsEmpty());
}

TEST_F(DictationTest, APressWithoutAMicrophoneIsNoRecording) {
  dictation_->keySeen();
  dictation_->modelLoaded(recogniser_);
  for (int press = 0; press < 2; ++press) {
    dictation_->keyPressed();
    EXPECT_THAT(output_.take(), IsEmpty());
    microphone_.fail("there is no microphone");
    loop_.runPosted();
    dictation_->keyReleased();
    loop_.advance(seconds(1));
    EXPECT_THAT(output_.take(), ElementsAre("Audio capture failed: there is no microphone"));
  }
  dictation_->microphoneFound();
  EXPECT_THAT(output_.take(), ElementsAre("Ready."));
}

TEST_F(DictationTest, SoundShowsThatThereIsAMicrophone) {
  dictation_->keySeen();
  dictation_->modelLoaded(recogniser_);
  hold(seconds(1));
  EXPECT_THAT(output_.take(), ElementsAre("Recording..."));
  EXPECT_EQ(recogniser_.utterance->fed.size(), kSecond);
  dictation_->keyCancelled();
  EXPECT_THAT(output_.take(), ElementsAre("Ready."));
}

TEST_F(DictationTest, APressShowsThatTheKeyIsSeen) {
  dictation_->microphoneFound();
  dictation_->modelLoaded(recogniser_);
  hold(seconds(1));
  EXPECT_THAT(output_.take(), ElementsAre("Recording..."));
  dictation_->keyCancelled();
  EXPECT_THAT(output_.take(), ElementsAre("Ready."));
}

TEST_F(DictationTest, AHeldKeyBecomesWords) {
  load();
  hold(milliseconds(2180));
  EXPECT_THAT(output_.take(), ElementsAre("Recording..."));
  dictation_->keyReleased();
  speak(Dictation::kTail);
  EXPECT_THAT(output_.take(), ElementsAre("Processing 2.3s audio"));
  ASSERT_TRUE(recogniser_.isFinishing());
  EXPECT_EQ(recogniser_.utterance->fed.size(), 2.3 * kSecond);
  understand("one two three");
  EXPECT_THAT(output_.take(), ElementsAre("[gpu-decode] text: \"one two three\"",
                                          "encode=0ms decode=123ms", "Ready."));
  EXPECT_THAT(sink_.texts, ElementsAre("one two three"));
  EXPECT_TRUE(loop_.isIdle());
}

TEST_F(DictationTest, APressPrintsRecordingAtOnce) {
  load();
  dictation_->keyPressed();
  EXPECT_THAT(output_.take(), ElementsAre("Recording..."));
  EXPECT_EQ(microphone_.captures.size(), 1U);
}

TEST_F(DictationTest, TheWordsAreInsertedAfterTheirLineIsPrinted) {
  load();
  hold(seconds(1));
  release();
  understand("yes");
  ASSERT_EQ(sink_.linesBefore.size(), 1U);
  EXPECT_THAT(sink_.linesBefore[0], testing::Contains("[gpu-decode] text: \"yes\""));
}

TEST_F(DictationTest, TheRecognisersLinesArePrintedBeforeTheWords) {
  load();
  hold(seconds(1));
  release();
  output_.take();
  recogniser_.understand("yes", {"one line", "another"});
  EXPECT_THAT(output_.take(), ElementsAre("one line", "another", "[gpu-decode] text: \"yes\"",
                                          "encode=0ms decode=123ms", "Ready."));
}

TEST_F(DictationTest, TheRecognisersLinesArePrintedWithoutWordsToo) {
  load();
  hold(seconds(1));
  release();
  output_.take();
  recogniser_.understand("", {"one line"});
  EXPECT_THAT(output_.take(), ElementsAre("one line", "Ready."));
}

TEST_F(DictationTest, SpeechIsRecognisedWhileTheKeyIsHeld) {
  load();
  hold(seconds(1));
  ASSERT_NE(recogniser_.utterance, nullptr);
  EXPECT_EQ(recogniser_.utterance->fed.size(), kSecond);
  EXPECT_FALSE(recogniser_.isFinishing());
}

TEST_F(DictationTest, TheMicrophoneIsOpenFromThePressToTheEndOfTheTail) {
  load();
  EXPECT_THAT(microphone_.captures, IsEmpty());
  hold(seconds(1));
  dictation_->keyReleased();
  loop_.advance(Dictation::kTail - milliseconds(1));
  EXPECT_EQ(microphone_.captures.size(), 1U);
  EXPECT_THAT(output_.take(), ElementsAre("Recording..."));
  loop_.advance(milliseconds(1));
  EXPECT_THAT(microphone_.captures, IsEmpty());
}

TEST_F(DictationTest, SamplesThatArriveAsTheMicrophoneClosesAreKept) {
  load();
  hold(seconds(1));
  dictation_->keyReleased();
  microphone_.feed(kSecond / 10, kLoud);  // posted, but not processed before the tail ends
  loop_.advance(Dictation::kTail);
  EXPECT_EQ(recogniser_.utterance->fed.size(), kSecond * 11 / 10);
}

TEST_F(DictationTest, AShortPressIsDropped) {
  load();
  dictation_->keyPressed();
  speak(milliseconds(240));
  loop_.advance(milliseconds(9));
  dictation_->keyReleased();
  EXPECT_THAT(output_.take(), ElementsAre("Recording...", "Ready."));
  EXPECT_THAT(microphone_.captures, IsEmpty());
  EXPECT_EQ(recogniser_.utterance, nullptr);
  loop_.advance(minutes(10));
  EXPECT_THAT(output_.take(), IsEmpty());
}

TEST_F(DictationTest, APressOfAQuarterOfASecondCounts) {
  load();
  hold(milliseconds(250));
  release();
  EXPECT_THAT(output_.take(), ElementsAre("Recording...", "Processing 0.3s audio"));
}

TEST_F(DictationTest, ARecordingWithTooFewSamplesIsDropped) {
  load();
  hold(milliseconds(240));
  loop_.advance(seconds(1));
  release();
  EXPECT_THAT(output_.take(), ElementsAre("Recording...", "Ready."));
  EXPECT_THAT(sink_.texts, IsEmpty());
}

TEST_F(DictationTest, ASilentRecordingIsDropped) {
  load();
  hold(seconds(2), 32);  // -60.2 dB
  release();
  EXPECT_THAT(output_.take(), ElementsAre("Recording...", "Ready."));
  EXPECT_EQ(recogniser_.utterance, nullptr);
}

TEST_F(DictationTest, FaintSpeechInALongSilenceCounts) {
  load();
  hold(seconds(2), 0);
  speak(milliseconds(100), 34);  // -59.7 dB
  speak(seconds(2), 0);
  release();
  EXPECT_TRUE(recogniser_.isFinishing());
}

TEST_F(DictationTest, NoTextIsPrintedWhenNothingWasUnderstood) {
  load();
  hold(seconds(1));
  release();
  output_.take();
  understand(" \n ");
  EXPECT_THAT(output_.take(), ElementsAre("Ready."));
  EXPECT_THAT(sink_.texts, IsEmpty());
}

TEST_F(DictationTest, TheTextIsPrintedOnOneLine) {
  load();
  hold(seconds(1));
  release();
  output_.take();
  understand(
      " a \"b\"\nc\xE2\x80\xA8"
      "d\xFF ");
  EXPECT_EQ(output_.take()[0], "[gpu-decode] text: \"a \"b\" c d\xEF\xBF\xBD\"");
  EXPECT_THAT(sink_.texts, ElementsAre("a \"b\" c d\xEF\xBF\xBD"));
}

TEST_F(DictationTest, ACancelledRecordingIsDropped) {
  load();
  hold(seconds(2));
  dictation_->keyCancelled();
  EXPECT_THAT(output_.take(), ElementsAre("Recording...", "Ready."));
  EXPECT_THAT(microphone_.captures, IsEmpty());
  EXPECT_EQ(recogniser_.utterance, nullptr);
  dictation_->keyReleased();
  loop_.advance(minutes(10));
  EXPECT_THAT(output_.take(), IsEmpty());
}

TEST_F(DictationTest, CancellingChangesNothingWhileTheKeyIsUp) {
  load();
  dictation_->keyCancelled();
  hold(seconds(1));
  dictation_->keyReleased();
  dictation_->keyCancelled();  // in the tail
  loop_.advance(Dictation::kTail);
  dictation_->keyCancelled();  // while it is recognised
  ASSERT_TRUE(recogniser_.isFinishing());
  understand("still here");
  EXPECT_THAT(sink_.texts, ElementsAre("still here"));
}

TEST_F(DictationTest, ASecondPressWithoutAReleaseChangesNothing) {
  load();
  hold(seconds(1));
  dictation_->keyPressed();
  EXPECT_THAT(output_.take(), ElementsAre("Recording..."));
  EXPECT_EQ(microphone_.openings, 1);
}

TEST_F(DictationTest, AReleaseWithoutAPressChangesNothing) {
  load();
  dictation_->keyReleased();
  loop_.advance(seconds(1));
  EXPECT_THAT(output_.take(), IsEmpty());
}

TEST_F(DictationTest, NothingIsRecordedBeforeTheModelIsLoaded) {
  dictation_->microphoneFound();
  dictation_->keyPressed();
  EXPECT_EQ(output_.take().size(), 1U);
  EXPECT_EQ(microphone_.openings, 0);
  dictation_->keyReleased();
  dictation_->modelLoaded(recogniser_);
  EXPECT_THAT(output_.take(), ElementsAre("Ready."));
  EXPECT_EQ(microphone_.openings, 0);
}

TEST_F(DictationTest, AKeyStillHeldWhenTheModelIsLoadedStartsARecording) {
  dictation_->microphoneFound();
  dictation_->keyPressed();
  output_.take();
  dictation_->modelLoaded(recogniser_);
  EXPECT_THAT(output_.take(), ElementsAre("Ready.", "Recording..."));
  EXPECT_EQ(microphone_.captures.size(), 1U);
}

TEST_F(DictationTest, APressCancelledBeforeTheModelIsLoadedRecordsNothing) {
  dictation_->microphoneFound();
  dictation_->keyPressed();
  dictation_->keyCancelled();
  output_.take();
  dictation_->modelLoaded(recogniser_);
  EXPECT_THAT(output_.take(), ElementsAre("Ready."));
}

}  // namespace
}  // namespace voxtrel::quillback
