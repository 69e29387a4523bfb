#include <gmock/gmock.h>

#include "support/DictationFixture.h"

namespace voxtrel::quillback {
namespace {

using std::chrono::milliseconds;
using std::chrono::minutes;
using std::chrono::seconds;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr std::size_t kSecond = kSampleRateHz;

class DictationEdgeCasesTest : public DictationFixture {};

TEST_F(DictationEdgeCasesTest, AMicrophoneThatCannotBeOpenedIsReported) {
  load();
  dictation_->keyPressed();
  microphone_.fail("there is no microphone");
  loop_.runPosted();
  EXPECT_THAT(
      output_.take(),
      ElementsAre("Recording...", "Audio capture failed: there is no microphone", "Ready."));
  dictation_->keyReleased();
  loop_.advance(seconds(1));
  EXPECT_THAT(output_.take(), IsEmpty());
  hold(seconds(1));
  release();
  EXPECT_TRUE(recogniser_.isFinishing());
}

TEST_F(DictationEdgeCasesTest, SpeechFromBeforeTheMicrophoneVanishedIsRecognised) {
  load();
  hold(seconds(1));
  output_.take();
  microphone_.fail("the microphone is gone");
  loop_.runPosted();
  EXPECT_THAT(output_.take(),
              ElementsAre("Audio capture failed: the microphone is gone", "Processing 1.0s audio"));
  understand("half a sen");
  EXPECT_THAT(sink_.texts, ElementsAre("half a sen"));
}

TEST_F(DictationEdgeCasesTest, SpeechIsKeptWhenTheMicrophoneVanishesInTheTail) {
  load();
  hold(seconds(1));
  dictation_->keyReleased();
  microphone_.fail("gone");
  loop_.runPosted();
  EXPECT_TRUE(recogniser_.isFinishing());
  loop_.advance(seconds(1));
  EXPECT_THAT(output_.take(),
              ElementsAre("Recording...", "Audio capture failed: gone", "Processing 1.0s audio"));
}

TEST_F(DictationEdgeCasesTest, AFailureAfterTheMicrophoneWasClosedIsIgnored) {
  load();
  hold(seconds(1));
  dictation_->keyReleased();
  loop_.advance(Dictation::kTail - milliseconds(1));
  const auto onFailure = microphone_.captures[0]->listener.onFailure;
  loop_.advance(milliseconds(1));
  onFailure("too late");
  loop_.runPosted();
  EXPECT_THAT(output_.take(), ElementsAre("Recording...", "Processing 1.0s audio"));
}

TEST_F(DictationEdgeCasesTest, ARecordingEndsAtFiveMinutesAndALineSaysSo) {
  load();
  hold(seconds(1));
  loop_.advance(minutes(5) - seconds(1) - milliseconds(1));
  EXPECT_THAT(output_.take(), ElementsAre("Recording..."));
  loop_.advance(milliseconds(1));
  EXPECT_THAT(output_.take(), ElementsAre(HasSubstr("5 minutes"), "Processing 1.0s audio"));
  dictation_->keyReleased();
  loop_.advance(seconds(1));
  understand("a lot");
  EXPECT_THAT(sink_.texts, ElementsAre("a lot"));
}

TEST_F(DictationEdgeCasesTest, APressRecordsWhileAnEarlierRecordingIsRecognised) {
  load();
  hold(seconds(1));
  release();
  output_.take();
  hold(seconds(2), 4000);
  EXPECT_THAT(output_.take(), ElementsAre("Recording..."));
  understand("first");
  // No timing line and no "Ready.": the reader would think that the recording is over.
  EXPECT_THAT(output_.take(), ElementsAre("[gpu-decode] text: \"first\""));
  EXPECT_FALSE(recogniser_.hasOverlapped);
  ASSERT_NE(recogniser_.utterance, nullptr);
  EXPECT_EQ(recogniser_.utterance->fed.size(), 2 * kSecond);
  EXPECT_EQ(recogniser_.utterance->fed[1], 4000);
  release();
  EXPECT_THAT(output_.take(), ElementsAre("Processing 2.0s audio"));
  understand("second");
  EXPECT_THAT(output_.take(),
              ElementsAre("[gpu-decode] text: \"second\"", "encode=0ms decode=123ms", "Ready."));
  EXPECT_THAT(sink_.texts, ElementsAre("first", "second"));
}

TEST_F(DictationEdgeCasesTest, TheStateIsPrintedAgainAfterWordsThatNameOne) {
  load();
  hold(seconds(1));
  release();
  hold(seconds(2));
  output_.take();
  understand("Ready. Set. Go.");
  EXPECT_THAT(output_.take(),
              ElementsAre("[gpu-decode] text: \"Ready. Set. Go.\"", "Recording..."));
  release();
  output_.take();
  understand("Recording...");
  EXPECT_THAT(output_.take(), ElementsAre("[gpu-decode] text: \"Recording...\"",
                                          "encode=0ms decode=123ms", "Ready."));
}

TEST_F(DictationEdgeCasesTest, ACompleteRecordingWaitsForTheEarlierOne) {
  load();
  hold(seconds(1));
  release();
  hold(seconds(2));
  release();
  EXPECT_THAT(output_.take(), ElementsAre("Recording...", "Processing 1.0s audio", "Recording...",
                                          "Processing 2.0s audio"));
  EXPECT_EQ(recogniser_.beginnings, 1);
  understand("first");
  EXPECT_EQ(recogniser_.beginnings, 2);
  ASSERT_TRUE(recogniser_.isFinishing());
  EXPECT_EQ(recogniser_.utterance->fed.size(), 2 * kSecond);
  understand("second");
  EXPECT_THAT(sink_.texts, ElementsAre("first", "second"));
  EXPECT_FALSE(recogniser_.hasOverlapped);
  EXPECT_EQ(output_.take().back(), "Ready.");
}

TEST_F(DictationEdgeCasesTest, APressInTheTailStartsANewRecording) {
  load();
  hold(seconds(1));
  dictation_->keyReleased();
  hold(seconds(1));
  loop_.advance(Dictation::kTail);
  EXPECT_THAT(output_.take(), ElementsAre("Recording...", "Recording..."));
  EXPECT_TRUE(recogniser_.isFinishing());
  understand("first");
  release();
  understand("second");
  EXPECT_THAT(sink_.texts, ElementsAre("first", "second"));
}

TEST_F(DictationEdgeCasesTest, TheStateOfTheEarlierRecordingIsPrintedAgainAfterASlip) {
  load();
  hold(seconds(1));
  release();
  output_.take();
  hold(milliseconds(100));
  dictation_->keyReleased();
  EXPECT_THAT(output_.take(), ElementsAre("Recording...", "Processing 1.0s audio"));
  EXPECT_TRUE(recogniser_.isFinishing());
}

TEST_F(DictationEdgeCasesTest, ARecordingIsRefusedWhenTheQueueIsFull) {
  load();
  for (std::size_t i = 0; i < Dictation::kMaxTakes; ++i) {
    hold(seconds(1));
    release();
  }
  output_.take();
  dictation_->keyPressed();
  EXPECT_THAT(output_.take(), ElementsAre(HasSubstr("Too many")));
  dictation_->keyReleased();
  EXPECT_EQ(microphone_.openings, static_cast<int>(Dictation::kMaxTakes));
  understand("first");
  hold(seconds(1));
  EXPECT_EQ(microphone_.captures.size(), 1U);
}

/// The engine may be stopped in each of these states.
TEST_F(DictationEdgeCasesTest, DestroyingItInAnyStateLeavesNothingBehind) {
  const std::vector<std::function<void()>> steps{[] {},
                                                 [this] { dictation_->keyPressed(); },
                                                 [this] { load(); },
                                                 [this] { hold(seconds(1)); },
                                                 [this] { microphone_.feed(kSecond, kLoud); },
                                                 [this] { dictation_->keyReleased(); },
                                                 [this] { loop_.advance(Dictation::kTail); },
                                                 [this] { hold(seconds(1)); },
                                                 [this] { recogniser_.understand(""); },
                                                 [this] { microphone_.fail("gone"); }};
  for (std::size_t count = 1; count <= steps.size(); ++count) {
    dictation_ = std::make_unique<Dictation>(loop_, microphone_, sink_, store_, lock_, output_);
    for (std::size_t i = 0; i < count; ++i) steps[i]();
    dictation_.reset();
    output_.take();
    loop_.advance(minutes(10));
    EXPECT_THAT(output_.take(), IsEmpty()) << count;
    EXPECT_THAT(microphone_.captures, IsEmpty()) << count;
    EXPECT_EQ(recogniser_.utterance, nullptr) << count;
    EXPECT_TRUE(loop_.isIdle()) << count;
    EXPECT_THAT(sink_.texts, IsEmpty()) << count;
  }
}

}  // namespace
}  // namespace voxtrel::quillback
