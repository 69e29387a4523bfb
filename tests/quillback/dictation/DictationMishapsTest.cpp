#include <gmock/gmock.h>

#include "support/DictationBench.h"

namespace voxtrel::quillback {
namespace {

using std::chrono::milliseconds;
using std::chrono::minutes;
using std::chrono::seconds;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr std::size_t kSecond = kSampleRateHz;

TEST_F(DictationTest, TellsOfAMicrophoneThatCannotBeOpened) {
  load();
  dictation_->keyPressed();
  microphone_.captures[0]->listener.onFailure("there is no microphone");
  loop_.runPosted();
  EXPECT_THAT(
      output_.take(),
      ElementsAre("Recording...", "Audio capture failed: there is no microphone", "Ready."));
  dictation_->keyReleased();
  loop_.advance(seconds(1));
  EXPECT_THAT(output_.take(), IsEmpty());
  hold(seconds(1));
  letGo();
  EXPECT_TRUE(recogniser_.isFinishing());
}

TEST_F(DictationTest, KeepsWhatWasSpokenBeforeTheMicrophoneVanished) {
  load();
  hold(seconds(1));
  output_.take();
  microphone_.captures[0]->listener.onFailure("the microphone is gone");
  loop_.runPosted();
  EXPECT_THAT(output_.take(),
              ElementsAre("Audio capture failed: the microphone is gone", "Processing 1.0s audio"));
  understand("half a sen");
  EXPECT_THAT(sink_.texts, ElementsAre("half a sen"));
}

TEST_F(DictationTest, KeepsTheSpeechWhereTheMicrophoneVanishesInTheTail) {
  load();
  hold(seconds(1));
  dictation_->keyReleased();
  microphone_.captures[0]->listener.onFailure("gone");
  loop_.runPosted();
  EXPECT_TRUE(recogniser_.isFinishing());
  loop_.advance(seconds(1));
  EXPECT_THAT(output_.take(),
              ElementsAre("Recording...", "Audio capture failed: gone", "Processing 1.0s audio"));
}

TEST_F(DictationTest, IgnoresAFailureThatArrivesAfterTheMicrophoneWasClosed) {
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

TEST_F(DictationTest, EndsARecordingAtFiveMinutesAndSaysSo) {
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

TEST_F(DictationTest, RecordsWhileAnEarlierRecordingIsRecognised) {
  load();
  hold(seconds(1));
  letGo();
  output_.take();
  hold(seconds(2), 4000);
  EXPECT_THAT(output_.take(), ElementsAre("Recording..."));
  understand("first");
  // Neither the timing line nor "Ready.": the reader would take the recording for over.
  EXPECT_THAT(output_.take(), ElementsAre("[gpu-decode] text: \"first\""));
  EXPECT_FALSE(recogniser_.hasOverlapped);
  ASSERT_NE(recogniser_.utterance, nullptr);
  EXPECT_EQ(recogniser_.utterance->fed.size(), 2 * kSecond);
  EXPECT_EQ(recogniser_.utterance->fed[1], 4000);
  letGo();
  EXPECT_THAT(output_.take(), ElementsAre("Processing 2.0s audio"));
  understand("second");
  EXPECT_THAT(output_.take(),
              ElementsAre("[gpu-decode] text: \"second\"", "encode=0ms decode=123ms", "Ready."));
  EXPECT_THAT(sink_.texts, ElementsAre("first", "second"));
}

TEST_F(DictationTest, ShowsItsStateAgainAfterWordsThatNameOne) {
  load();
  hold(seconds(1));
  letGo();
  hold(seconds(2));
  output_.take();
  understand("Ready. Set. Go.");
  EXPECT_THAT(output_.take(),
              ElementsAre("[gpu-decode] text: \"Ready. Set. Go.\"", "Recording..."));
  letGo();
  output_.take();
  understand("Recording...");
  EXPECT_THAT(output_.take(), ElementsAre("[gpu-decode] text: \"Recording...\"",
                                          "encode=0ms decode=123ms", "Ready."));
}

TEST_F(DictationTest, ACompleteRecordingWaitsForTheEarlierOne) {
  load();
  hold(seconds(1));
  letGo();
  hold(seconds(2));
  letGo();
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

TEST_F(DictationTest, APressInTheTailRecordsAnew) {
  load();
  hold(seconds(1));
  dictation_->keyReleased();
  hold(seconds(1));
  loop_.advance(Dictation::kTail);
  EXPECT_THAT(output_.take(), ElementsAre("Recording...", "Recording..."));
  EXPECT_TRUE(recogniser_.isFinishing());
  understand("first");
  letGo();
  understand("second");
  EXPECT_THAT(sink_.texts, ElementsAre("first", "second"));
}

TEST_F(DictationTest, ShowsTheEarlierRecordingAgainAfterASlip) {
  load();
  hold(seconds(1));
  letGo();
  output_.take();
  hold(milliseconds(100));
  dictation_->keyReleased();
  EXPECT_THAT(output_.take(), ElementsAre("Recording...", "Processing 1.0s audio"));
  EXPECT_TRUE(recogniser_.isFinishing());
}

TEST_F(DictationTest, RefusesARecordingWhereTooManyWait) {
  load();
  for (std::size_t i = 0; i < Dictation::kMostTakes; ++i) {
    hold(seconds(1));
    letGo();
  }
  output_.take();
  dictation_->keyPressed();
  EXPECT_THAT(output_.take(), ElementsAre(HasSubstr("Too many")));
  dictation_->keyReleased();
  EXPECT_EQ(microphone_.openings, static_cast<int>(Dictation::kMostTakes));
  understand("first");
  hold(seconds(1));
  EXPECT_EQ(microphone_.captures.size(), 1U);
}

/// Each of these is a state in which the engine may be told to end.
TEST_F(DictationTest, CanEndInEveryState) {
  const std::vector<std::function<void()>> steps{
      [] {},
      [this] { dictation_->keyPressed(); },
      [this] { load(); },
      [this] { hold(seconds(1)); },
      [this] { microphone_.hear(kSecond, kLoud); },
      [this] { dictation_->keyReleased(); },
      [this] { loop_.advance(Dictation::kTail); },
      [this] { hold(seconds(1)); },
      [this] {
        recogniser_.utterance->done({"x", {}, {}});
      },
      [this] { microphone_.captures[0]->listener.onFailure("gone"); }};
  for (std::size_t count = 1; count <= steps.size(); ++count) {
    dictation_ = std::make_unique<Dictation>(loop_, microphone_, sink_, output_);
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
