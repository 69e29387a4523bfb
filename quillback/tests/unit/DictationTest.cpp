#include <gmock/gmock.h>

#include "dictation/Dictation.h"
#include "support/FakeEnginePorts.h"
#include "support/ManualLoop.h"

namespace quillback {
namespace {

using std::chrono::milliseconds;
using std::chrono::minutes;
using std::chrono::seconds;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr std::size_t kSecond = kSampleRateHz;
constexpr std::int16_t kLoud = 3000;

class DictationTest : public testing::Test {
 protected:
  void load() {
    dictation_->modelLoaded(recogniser_);
    output_.take();
  }
  /// Holds the key for `span` of speech, which arrives as it is spoken.
  void hold(milliseconds span, std::int16_t level = kLoud) {
    dictation_->keyPressed();
    speak(span, level);
  }
  void speak(milliseconds span, std::int16_t level = kLoud) {
    for (milliseconds spoken{0}; spoken < span; spoken += milliseconds(10)) {
      microphone_.hear(kSecond / 100, level);
      loop_.advance(milliseconds(10));
    }
    loop_.runPosted();
  }
  /// Lets go of the key, and of the tail.
  void letGo() {
    dictation_->keyReleased();
    loop_.advance(Dictation::kTail);
  }
  void understand(const std::string& text) {
    recogniser_.understand(text);
    loop_.runPosted();
  }

  test::ManualLoop loop_;
  test::FakeMicrophone microphone_;
  test::FakeRecogniser recogniser_;
  test::FakeOutput output_;
  test::FakeTextSink sink_{output_};
  std::unique_ptr<Dictation> dictation_ =
      std::make_unique<Dictation>(loop_, microphone_, sink_, output_);
};

TEST_F(DictationTest, IsReadyOnceTheModelIsLoaded) {
  EXPECT_THAT(output_.take(), IsEmpty());
  dictation_->modelLoaded(recogniser_);
  EXPECT_THAT(output_.take(), ElementsAre("Ready."));
}

TEST_F(DictationTest, TurnsAHeldKeyIntoWords) {
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

TEST_F(DictationTest, SaysThatItRecordsBeforeAnythingElseHappens) {
  load();
  dictation_->keyPressed();
  EXPECT_THAT(output_.take(), ElementsAre("Recording..."));
  EXPECT_EQ(microphone_.captures.size(), 1U);
}

TEST_F(DictationTest, HandsTheWordsOnAfterTheirLine) {
  load();
  hold(seconds(1));
  letGo();
  understand("yes");
  ASSERT_EQ(sink_.linesBefore.size(), 1U);
  EXPECT_THAT(sink_.linesBefore[0], testing::Contains("[gpu-decode] text: \"yes\""));
}

TEST_F(DictationTest, RecognisesWhileTheKeyIsHeld) {
  load();
  hold(seconds(1));
  ASSERT_NE(recogniser_.utterance, nullptr);
  EXPECT_EQ(recogniser_.utterance->fed.size(), kSecond);
  EXPECT_FALSE(recogniser_.isFinishing());
}

TEST_F(DictationTest, KeepsTheMicrophoneOpenOnlyFromThePressToTheTailsEnd) {
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

TEST_F(DictationTest, LosesNoSamplesThatArriveAsTheMicrophoneIsClosed) {
  load();
  hold(seconds(1));
  dictation_->keyReleased();
  microphone_.hear(kSecond / 10, kLoud);  // posted, and not heard before the tail ends
  loop_.advance(Dictation::kTail);
  EXPECT_EQ(recogniser_.utterance->fed.size(), kSecond * 11 / 10);
}

TEST_F(DictationTest, TakesAShortPressForASlip) {
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

TEST_F(DictationTest, HearsAPressOfAQuarterOfASecond) {
  load();
  hold(milliseconds(250));
  letGo();
  EXPECT_THAT(output_.take(), ElementsAre("Recording...", "Processing 0.3s audio"));
}

TEST_F(DictationTest, IsReadyAgainWhereHardlyAnySamplesCame) {
  load();
  hold(milliseconds(240));
  loop_.advance(seconds(1));
  letGo();
  EXPECT_THAT(output_.take(), ElementsAre("Recording...", "Ready."));
  EXPECT_THAT(sink_.texts, IsEmpty());
}

TEST_F(DictationTest, IsReadyAgainAfterSilence) {
  load();
  hold(seconds(2), 32);  // -60.2 dB
  letGo();
  EXPECT_THAT(output_.take(), ElementsAre("Recording...", "Ready."));
  EXPECT_EQ(recogniser_.utterance, nullptr);
}

TEST_F(DictationTest, HearsFaintSpeechInALongSilence) {
  load();
  hold(seconds(2), 0);
  speak(milliseconds(100), 34);  // -59.7 dB
  speak(seconds(2), 0);
  letGo();
  EXPECT_TRUE(recogniser_.isFinishing());
}

TEST_F(DictationTest, PrintsNoTextWhereNothingWasUnderstood) {
  load();
  hold(seconds(1));
  letGo();
  output_.take();
  understand(" \n ");
  EXPECT_THAT(output_.take(), ElementsAre("Ready."));
  EXPECT_THAT(sink_.texts, IsEmpty());
}

TEST_F(DictationTest, PrintsTheTextOnOneLine) {
  load();
  hold(seconds(1));
  letGo();
  output_.take();
  understand(
      " a \"b\"\nc\xE2\x80\xA8"
      "d\xFF ");
  EXPECT_EQ(output_.take()[0], "[gpu-decode] text: \"a \"b\" c d\xEF\xBF\xBD\"");
  EXPECT_THAT(sink_.texts, ElementsAre("a \"b\" c d\xEF\xBF\xBD"));
}

TEST_F(DictationTest, DropsACancelledRecording) {
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

TEST_F(DictationTest, CancellingChangesNothingWhereNoKeyIsHeld) {
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

TEST_F(DictationTest, RecordsNothingBeforeTheModelIsThere) {
  dictation_->keyPressed();
  EXPECT_EQ(output_.take().size(), 1U);
  EXPECT_EQ(microphone_.openings, 0);
  dictation_->keyReleased();
  dictation_->modelLoaded(recogniser_);
  EXPECT_THAT(output_.take(), ElementsAre("Ready."));
  EXPECT_EQ(microphone_.openings, 0);
}

TEST_F(DictationTest, RecordsFromWhenTheModelIsThereIfTheKeyIsStillHeld) {
  dictation_->keyPressed();
  output_.take();
  dictation_->modelLoaded(recogniser_);
  EXPECT_THAT(output_.take(), ElementsAre("Ready.", "Recording..."));
  EXPECT_EQ(microphone_.captures.size(), 1U);
}

TEST_F(DictationTest, RecordsNothingIfTheKeyWasCancelledBeforeTheModelWasThere) {
  dictation_->keyPressed();
  dictation_->keyCancelled();
  output_.take();
  dictation_->modelLoaded(recogniser_);
  EXPECT_THAT(output_.take(), ElementsAre("Ready."));
}

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
}  // namespace quillback
