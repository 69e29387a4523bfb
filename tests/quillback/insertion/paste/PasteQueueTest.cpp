#include <gmock/gmock.h>

#include "quillback/insertion/paste/PasteQueue.h"
#include "support/FakePasteClipboard.h"
#include "support/ManualLoop.h"

namespace voxtrel::quillback {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

constexpr milliseconds kSettled{30};
constexpr milliseconds kQuiet{200};

/// A window that reads the clipboard when the paste key is pressed, unless it is deaf.
class PasteQueueTest : public ::testing::Test {
 protected:
  PasteQueueTest() {
    clipboard_.copyElsewhere("theirs");
    queue_.open();
  }

  void add(const std::string& text) {
    queue_.add(text, [this] { ++ended_; });
  }

  test::ManualLoop loop_;
  test::FakePasteClipboard clipboard_{loop_};
  PasteClipboard* given_ = &clipboard_;
  bool isDeaf_ = false;
  bool isLocked_ = false;
  std::optional<std::string> window_ = "";  // none: the desktop has not answered yet
  PasteQueue::OnFocus onFocus_;
  int pressed_ = 0;
  int ended_ = 0;
  std::vector<std::string> pasted_;
  std::vector<std::string> refused_;
  PasteQueue queue_{loop_,
                    {[this] { return given_; }, [this] { return isLocked_; },
                     [this](PasteQueue::OnFocus onFocus) {
                       window_ ? onFocus(*window_) : void(onFocus_ = std::move(onFocus));
                     },
                     [this] {
                       ++pressed_;
                       if (!isDeaf_) pasted_.push_back(clipboard_.readElsewhere());
                     },
                     [this](const std::string& text, const std::string& why) {
                       refused_.push_back(text + ": " + why);
                     }}};
};

TEST_F(PasteQueueTest, PastesAndThenPutsBackWhatWasThere) {
  add("words");
  EXPECT_EQ(clipboard_.text(), "words");
  EXPECT_EQ(pressed_, 0);
  loop_.advance(kSettled);
  EXPECT_THAT(pasted_, ElementsAre("words"));
  EXPECT_EQ(ended_, 1);
  EXPECT_EQ(clipboard_.text(), "words");
  loop_.advance(kQuiet);
  EXPECT_EQ(clipboard_.text(), "theirs");
  EXPECT_TRUE(loop_.isIdle());
}

TEST_F(PasteQueueTest, EveryTypeIsPutBack) {
  const ClipboardContent before{{"image/png", std::string("\0png", 4)}, {"text/html", "<b>"}};
  clipboard_.content = before;
  add("words");
  loop_.advance(kSettled + kQuiet);
  EXPECT_EQ(clipboard_.content, before);
}

TEST_F(PasteQueueTest, AnEmptyClipboardIsEmptyAgain) {
  clipboard_.content.clear();
  add("words");
  loop_.advance(kSettled + kQuiet);
  EXPECT_THAT(clipboard_.content, IsEmpty());
}

TEST_F(PasteQueueTest, AReadBeforeTheKeyIsNotThePaste) {
  isDeaf_ = true;
  add("words");
  clipboard_.readElsewhere();
  loop_.advance(kSettled);
  EXPECT_EQ(pressed_, 1);
  EXPECT_EQ(ended_, 0);
  clipboard_.readElsewhere();
  EXPECT_EQ(ended_, 1);
}

TEST_F(PasteQueueTest, AReadThatBeganBeforeTheKeyIsNotThePasteEither) {
  isDeaf_ = true;
  add("words");
  const auto asked = loop_.now();
  loop_.advance(kSettled);
  EXPECT_EQ(pressed_, 1);
  clipboard_.onRead("text/plain", asked);
  EXPECT_EQ(ended_, 0);
  clipboard_.readElsewhere();
  EXPECT_EQ(ended_, 1);
}

TEST_F(PasteQueueTest, NoKeyIsPressedUnderALockedScreen) {
  add("one");
  isLocked_ = true;
  loop_.advance(kSettled);
  EXPECT_THAT(refused_, ElementsAre("one: the screen is locked"));
  EXPECT_EQ(pressed_, 0);
  isLocked_ = false;
  add("two");
  loop_.advance(kSettled);
  EXPECT_THAT(pasted_, ElementsAre("two"));
}

TEST_F(PasteQueueTest, TheWordsWaitUntilTheWindowIsKnown) {
  window_ = std::nullopt;
  add("one");
  loop_.advance(milliseconds(100));
  EXPECT_EQ(clipboard_.text(), "theirs");
  onFocus_("editor");
  loop_.advance(kSettled);
  EXPECT_THAT(pasted_, ElementsAre("one"));
}

TEST_F(PasteQueueTest, AnUnknownWindowDoesNotHoldTheWordsUpForLong) {
  window_ = std::nullopt;
  add("one");
  loop_.advance(milliseconds(350));
  EXPECT_THAT(pasted_, ElementsAre("one"));
  onFocus_("editor");
  loop_.advance(kQuiet);
  EXPECT_EQ(clipboard_.text(), "theirs");
}

TEST_F(PasteQueueTest, ATextIntoAnotherWindowBeginsWithoutASpace) {
  for (const char* window : {"editor", "editor", "terminal", "terminal"}) {
    window_ = window;
    add("text");
    loop_.advance(kSettled + kQuiet);
  }
  EXPECT_THAT(pasted_, ElementsAre("text", " text", "text", " text"));
}

TEST_F(PasteQueueTest, AWindowThatIsNotKnownCountsAsTheSame) {
  for (const char* window : {"editor", "", "editor"}) {
    window_ = window;
    add("text");
    loop_.advance(kSettled + kQuiet);
  }
  EXPECT_THAT(pasted_, ElementsAre("text", " text", " text"));
}

TEST_F(PasteQueueTest, EachOfSeveralTextsAsksForTheWindow) {
  window_ = "editor";
  add("one");
  add("two");
  window_ = "terminal";
  loop_.advance(2 * (kSettled + kQuiet));
  EXPECT_THAT(pasted_, ElementsAre("one", "two"));
  EXPECT_EQ(clipboard_.text(), "theirs");
}

TEST_F(PasteQueueTest, AClipboardThatGoesBeforeTheWindowIsKnownRefusesTheText) {
  window_ = std::nullopt;
  add("one");
  given_ = nullptr;
  onFocus_("editor");
  EXPECT_THAT(refused_, ElementsAre("one: the clipboard is gone"));
}

TEST_F(PasteQueueTest, ReadersBeforeTheKeyDoNotHoldItUpForLong) {
  add("words");
  for (int i = 0; i < 30; ++i) {
    clipboard_.readElsewhere();
    loop_.advance(milliseconds(10));
  }
  EXPECT_EQ(pressed_, 1);
}

TEST_F(PasteQueueTest, TheKeyWaitsForTheDesktopsOwnReadHoweverLateItComes) {
  clipboard_.isWatchedByDesktop = true;
  isDeaf_ = true;
  add("words");
  loop_.advance(milliseconds(600));
  EXPECT_EQ(pressed_, 0);
  clipboard_.readElsewhere();
  EXPECT_EQ(ended_, 0);
  loop_.advance(kSettled);
  EXPECT_EQ(pressed_, 1);
  EXPECT_EQ(ended_, 0);
  clipboard_.readElsewhere();
  EXPECT_EQ(ended_, 1);
}

TEST_F(PasteQueueTest, ADesktopThatDoesNotReadAsItUsedToHoldsTheWordsUpForASecondOnly) {
  clipboard_.isWatchedByDesktop = true;
  add("words");
  loop_.advance(milliseconds(900));
  EXPECT_EQ(pressed_, 0);
  loop_.advance(milliseconds(200));
  EXPECT_THAT(pasted_, ElementsAre("words"));
}

TEST_F(PasteQueueTest, TheHintForClipboardHistoriesIsNotThePaste) {
  isDeaf_ = true;
  add("words");
  loop_.advance(kSettled);
  clipboard_.readElsewhere("x-kde-passwordManagerHint");
  EXPECT_EQ(ended_, 0);
  EXPECT_EQ(clipboard_.content.back(),
            (ClipboardContent::value_type{"x-kde-passwordManagerHint", "secret"}));
}

TEST_F(PasteQueueTest, AProgramThatReadsAgainGetsTheWordsAgain) {
  add("words");
  loop_.advance(kSettled + milliseconds(100));
  EXPECT_EQ(clipboard_.readElsewhere(), "words");
  loop_.advance(milliseconds(100));
  EXPECT_EQ(clipboard_.readElsewhere(), "words");
  loop_.advance(kQuiet);
  EXPECT_EQ(clipboard_.text(), "theirs");
}

TEST_F(PasteQueueTest, AProgramThatKeepsReadingGetsTheOldContentAfterASecond) {
  add("words");
  loop_.advance(kSettled);
  for (int i = 0; i < 150 && clipboard_.text() == "words"; ++i) {
    clipboard_.readElsewhere();
    loop_.advance(milliseconds(10));
  }
  EXPECT_EQ(clipboard_.text(), "theirs");
}

TEST_F(PasteQueueTest, WithoutAReaderTheTextIsRefusedAndNothingPutBack) {
  isDeaf_ = true;
  add("words");
  loop_.advance(seconds(3));
  EXPECT_THAT(refused_, ElementsAre(StartsWith("words: no window has taken it")));
  EXPECT_EQ(ended_, 1);
  EXPECT_EQ(clipboard_.text(), "words");
  EXPECT_TRUE(loop_.isIdle());
}

TEST_F(PasteQueueTest, TextsArePastedInOrderAndTheOldOneIsReadAndPutBackOnce) {
  for (const char* text : {"one", "two", "."}) add(text);
  loop_.advance(3 * (kSettled + kQuiet));
  EXPECT_THAT(pasted_, ElementsAre("one", " two", "."));
  EXPECT_EQ(ended_, 3);
  EXPECT_EQ(clipboard_.reads, 1);
  EXPECT_EQ(clipboard_.text(), "theirs");
}

TEST_F(PasteQueueTest, ATextAMinuteLaterBeginsWithoutASpace) {
  add("one");
  loop_.advance(seconds(61));
  add("two");
  loop_.advance(kSettled);
  EXPECT_THAT(pasted_, ElementsAre("one", "two"));
}

TEST_F(PasteQueueTest, WhatAnotherProgramCopiesMeanwhileStays) {
  add("words");
  loop_.advance(kSettled);
  clipboard_.copyElsewhere("newer");
  loop_.advance(kQuiet);
  EXPECT_EQ(clipboard_.text(), "newer");
}

TEST_F(PasteQueueTest, ASlowProgramCannotHoldTheWordsUp) {
  clipboard_.isSlow = true;
  clipboard_.part = {{"text/plain", "a part"}};
  add("words");
  EXPECT_EQ(clipboard_.text(), "theirs");
  loop_.advance(milliseconds(300) + kSettled);
  EXPECT_THAT(pasted_, ElementsAre("words"));
  loop_.advance(kQuiet);
  EXPECT_EQ(clipboard_.text(), "a part");
}

TEST_F(PasteQueueTest, AClipboardThatDoesNotAnswerOrRefusesRefusesTheText) {
  clipboard_.answersOffers = false;
  add("one");
  loop_.advance(seconds(3));
  clipboard_.answersOffers = true;
  clipboard_.takesOffers = false;
  add("two");
  EXPECT_THAT(refused_, ElementsAre("one: the clipboard does not answer",
                                    "two: the desktop did not take it into the clipboard"));
  EXPECT_EQ(pressed_, 0);
  EXPECT_EQ(ended_, 2);
}

TEST_F(PasteQueueTest, WithoutAClipboardTheTextIsRefused) {
  given_ = nullptr;
  add("one");
  EXPECT_THAT(refused_, ElementsAre("one: there is no clipboard"));
  given_ = &clipboard_;
  add("two");
  given_ = nullptr;
  loop_.advance(kSettled);
  EXPECT_THAT(refused_, ElementsAre("one: there is no clipboard", "two: the clipboard is gone"));
  EXPECT_EQ(pressed_, 0);
}

TEST_F(PasteQueueTest, AClipboardThatSeesNoReadsIsLeftWithTheWords) {
  clipboard_.tellsReads = false;
  add("words");
  loop_.advance(kSettled);
  EXPECT_THAT(pasted_, ElementsAre("words"));
  EXPECT_EQ(ended_, 0);
  loop_.advance(seconds(1));
  EXPECT_EQ(ended_, 1);
  EXPECT_EQ(clipboard_.text(), "words");
}

TEST_F(PasteQueueTest, ClosingRefusesWhatWasNotReadAndOpeningGoesOn) {
  isDeaf_ = true;
  add("one");
  loop_.advance(kSettled);
  add("two");
  queue_.close("it ended");
  EXPECT_THAT(refused_, ElementsAre("one: it ended", "two: it ended"));
  EXPECT_EQ(ended_, 2);
  isDeaf_ = false;
  add("three");
  loop_.advance(kSettled);
  EXPECT_THAT(pasted_, IsEmpty());
  queue_.open();
  loop_.advance(kSettled);
  EXPECT_THAT(pasted_, ElementsAre("three"));
}

TEST_F(PasteQueueTest, ClosingAfterTheReadStillPutsBack) {
  add("words");
  loop_.advance(kSettled);
  queue_.close("it ended");
  EXPECT_EQ(clipboard_.text(), "theirs");
  EXPECT_THAT(refused_, IsEmpty());
  EXPECT_TRUE(loop_.isIdle());
}

}  // namespace
}  // namespace voxtrel::quillback
