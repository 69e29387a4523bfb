#include "quillback/insertion/x11/desktop/TypingFixture.h"

namespace voxtrel::quillback {
namespace {

using test::outputOf;
using test::run;
using ::testing::IsEmpty;

class XTestTyperTest : public TypingFixture {};

class TypingInLayoutTest : public TypingFixture,
                           public ::testing::WithParamInterface<const char*> {};
INSTANTIATE_TEST_SUITE_P(Layouts, TypingInLayoutTest,
                         ::testing::Values("us", "de", "fr", "ru", "gr,us", "us -variant intl"),
                         [](const auto& parameter) {
                           return "Layout" + std::to_string(parameter.index);
                         });

TEST_P(TypingInLayoutTest, AnyTextArrivesUnchangedAndTheKeymapIsRestored) {
  run(std::string("setxkbmap ") + GetParam());
  openField();
  const std::string before = keymap();
  EXPECT_EQ(typed(kEverything), kEverything);
  EXPECT_EQ(keymap(), before);
  const std::string twice = kEverything + " " + kEverything;
  EXPECT_EQ(typed(kEverything, twice), twice);
  EXPECT_EQ(keymap(), before);
  EXPECT_THAT(pressedKeys(), IsEmpty());
}

TEST_F(XTestTyperTest, CharactersOfTheLayoutNeedNoKeymapChange) {
  openField();
  typer().type("The quick brown fox, 1 + 1 = 2!");
  const std::string during = keymap();
  ASSERT_TRUE(runUntil([&] { return typer().isIdle(); }));
  EXPECT_EQ(keymap(), during);
  EXPECT_TRUE(runUntil([&] { return content() == "The quick brown fox, 1 + 1 = 2!"; }));
}

TEST_F(XTestTyperTest, HeldModifiersChangeNothing) {
  openField();
  std::string expected;
  for (const std::string held : {"50", "37", "133", "134", "64", "105 keydown 62"}) {
    run("xdotool keydown " + held);
    expected += (expected.empty() ? "" : " ") + kEverything;
    EXPECT_EQ(typed(kEverything, expected), expected) << "with " << held;
    EXPECT_THAT(pressedKeys(), IsEmpty());
    run("xdotool keyup 50 keyup 37 keyup 133 keyup 134 keyup 64 keyup 105 keyup 62");
  }
}

TEST_F(XTestTyperTest, CapsLockChangesNothingAndStaysOn) {
  openField();
  run("xdotool key Caps_Lock");
  EXPECT_EQ(typed("Aa Ññ"), "Aa Ññ");
  EXPECT_EQ(outputOf("xset q | grep -o 'Caps Lock: *on' | tr -d ' '"), "CapsLock:on\n");
  run("xdotool key Caps_Lock");
  EXPECT_EQ(outputOf("xset q | grep -o 'Caps Lock: *off' | tr -d ' '"), "CapsLock:off\n");
}

TEST_F(XTestTyperTest, MoreForeignCharactersThanSpareKeysArriveInBatches) {
  openField();
  std::string text;
  for (char32_t c = 0x4E00; c < 0x4E00 + 60; ++c) {
    text += {static_cast<char>(0xE0 | c >> 12), static_cast<char>(0x80 | (c >> 6 & 0x3F)),
             static_cast<char>(0x80 | (c & 0x3F))};
  }
  const std::string before = keymap();
  EXPECT_EQ(typed(text), text);
  EXPECT_EQ(keymap(), before);
}

TEST_F(XTestTyperTest, ASlowClientReadsEachBatchByItsOwnKeymap) {
  openField();
  const std::string text = "абвгдежзийклмнопрстуфхцчшщъыьэюя";
  kill(field_->processId(), SIGSTOP);
  typer().type(text);
  runFor(std::chrono::milliseconds(1500));
  kill(field_->processId(), SIGCONT);
  EXPECT_TRUE(runUntil([&] { return content() == text && typer().isIdle(); })) << content();
}

TEST_F(XTestTyperTest, AHungClientIsTimedOut) {
  const std::string before = keymap();
  openField();
  kill(field_->processId(), SIGSTOP);
  type("Ж");
  EXPECT_EQ(keymap(), before);
  kill(field_->processId(), SIGCONT);
}

TEST_F(XTestTyperTest, ALongTextArrivesWhole) {
  openField();
  std::string text;
  for (int i = 0; i < 60; ++i) text += "Word " + std::to_string(i) + "; ";
  text += "Ж.";
  EXPECT_EQ(typed(text), text);
}

TEST_F(XTestTyperTest, TheEndIsReportedWhenAllWasSent) {
  openField("field");
  const std::string text(10 * XTestTyper::kStrokesPerPiece, 'x');
  bool hasEnded = false;
  const auto start = std::chrono::steady_clock::now();
  typer().type(text, [&] { hasEnded = true; });
  EXPECT_FALSE(hasEnded);
  EXPECT_TRUE(runUntil([&] { return hasEnded; }));
  // Between its ten pieces there are nine waits.
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(90));
  EXPECT_TRUE(runUntil([&] { return content() == text; }));
}

TEST_F(XTestTyperTest, ASpaceGoesBetweenTextsInTheSameWindowOnly) {
  openField("first");
  EXPECT_EQ(typed("one"), "one");
  typer().type("two");
  typer().type("three\twords");
  EXPECT_TRUE(runUntil([&] { return content() == "one two three words"; })) << content();
  field_.reset();
  openField("second");
  EXPECT_EQ(typed("four"), "four");
  EXPECT_EQ(typed("five", "four five"), "four five");
}

TEST_F(XTestTyperTest, ANewlinePressesReturn) {
  openField();
  EXPECT_EQ(typed("one\ntwo Ж\n\n"), "one\ntwo Ж\n\n");
  EXPECT_EQ(typed("three", "one\ntwo Ж\n\nthree"), "one\ntwo Ж\n\nthree");
  EXPECT_EQ(typed("\nfour", "one\ntwo Ж\n\nthree\nfour"), "one\ntwo Ж\n\nthree\nfour");
  EXPECT_EQ(typed(".", "one\ntwo Ж\n\nthree\nfour."), "one\ntwo Ж\n\nthree\nfour.");
  EXPECT_THAT(pressedKeys(), IsEmpty());
}

TEST_F(XTestTyperTest, OnlyTheUsersKeysCountAsTheHotkey) {
  run("setxkbmap de");
  openField();
  const auto watch = watchKey("right_opt");
  ASSERT_TRUE(watch) << watch.error();
  run("xdotool keydown 108");
  runFor(kSettle);
  EXPECT_THAT(events_, ::testing::ElementsAre("pressed"));
  EXPECT_EQ(typed("@ € @"), "@ € @");
  EXPECT_THAT(events_, ::testing::ElementsAre("pressed"))
      << "AltGr was typed; the user still holds the hotkey";
  run("xdotool keyup 108");
  runFor(kSettle);
  run("xdotool key 108");
  runFor(kSettle);
  EXPECT_THAT(events_, ::testing::ElementsAre("pressed", "released", "pressed", "released"));
}

TEST_F(XTestTyperTest, AKeyPressedByTheUserMeanwhileIsReported) {
  openField();
  const auto watch = watchKey("right_cmd");
  ASSERT_TRUE(watch) << watch.error();
  typer().type("Ж and more");
  run("xdotool keydown 134");
  EXPECT_TRUE(runUntil([&] { return typer().isIdle(); }));
  run("xdotool keyup 134");
  runFor(kSettle);
  EXPECT_THAT(events_, ::testing::ElementsAre("pressed", "released"));
  EXPECT_EQ(content(), "Ж and more");
}

TEST_F(XTestTyperTest, DestroyingItInTheMiddleRestoresAtOnceAndLeavesNoKeyPressed) {
  const std::string before = keymap();
  run("xdotool key Caps_Lock");
  openField();
  typer().type(kEverything + std::string(2000, 'x'));
  runFor(std::chrono::milliseconds(30));
  EXPECT_NE(keymap(), before);
  const auto start = std::chrono::steady_clock::now();
  typer_.reset();
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(200));
  EXPECT_EQ(keymap(), before);
  EXPECT_THAT(pressedKeys(), IsEmpty());
  EXPECT_EQ(outputOf("xset q | grep -o 'Caps Lock: *on' | tr -d ' '"), "CapsLock:on\n");
  EXPECT_LT(content().size(), 2000u) << "the text was complete already";
}

TEST_F(XTestTyperTest, ALayoutChosenMeanwhileIsKept) {
  openField();
  typer().type("Ж");
  runFor(kSettle);
  const std::string spare = outputOf(
      "xmodmap -pke | sed -n 's/^keycode *\\([0-9]*\\) = Cyrillic_ZHE.*/\\1/p' | tr -d '\\n'");
  ASSERT_NE(spare, "");
  run("setxkbmap de");
  run("xmodmap -e 'keycode " + spare + " = F20'");
  const std::string chosen = keymap();
  ASSERT_TRUE(runUntil([&] { return typer().isIdle(); }));
  EXPECT_EQ(keymap(), chosen);
}

TEST_F(XTestTyperTest, ALockedScreenGetsNoMoreText) {
  openField();
  std::string text;
  for (int i = 0; text.size() < 5000; ++i) text += std::to_string(i);
  typer().type(text);
  ASSERT_TRUE(runUntil([&] { return !content().empty(); }));
  lock_.locked = true;
  ASSERT_TRUE(runUntil([&] { return typer().isIdle() && refused_.size() == 1; }));
  // The field rewrites its file now and then.
  EXPECT_TRUE(runUntil([&] {
    return refused_.front() == text.substr(content().size()) + ": the screen is locked";
  })) << content()
      << '\n'
      << refused_.front();
  EXPECT_LT(content().size(), text.size());
  typer().type("more");
  ASSERT_TRUE(runUntil([&] { return refused_.size() == 2; }));
  EXPECT_EQ(refused_.back(), "more: the screen is locked");
}

TEST_F(XTestTyperTest, WithoutAFocusedWindowTheTextIsRefused) {
  const auto server = XConnection::open();
  xcb_set_input_focus(server->get(), XCB_INPUT_FOCUS_NONE, XCB_NONE, XCB_CURRENT_TIME);
  server->flush();
  runFor(kSettle);
  typer().type("hello");
  EXPECT_THAT(refused_, ::testing::ElementsAre("hello: no window has the focus"));
}

TEST_F(XTestTyperTest, AServerThatDiesInTheMiddleRefusesTheRestAndTheNextText) {
  openField();
  typer().type("Ж");
  display_.kill();
  runFor(std::chrono::milliseconds(1500));
  typer().type("next");
  EXPECT_THAT(refused_,
              ::testing::ElementsAre("Ж: the X server is gone", "next: the X server is gone"));
}

TEST_F(XTestTyperTest, AServerThatHangsForAMomentGetsTheWholeText) {
  openField();
  const std::string text(300, 'x');
  typer().type(text);
  ASSERT_TRUE(runUntil([&] { return !content().empty(); }));
  display_.stop();
  runFor(std::chrono::milliseconds(800));
  display_.resume();
  EXPECT_TRUE(runUntil([&] { return typer().isIdle() && content() == text; })) << content();
  EXPECT_THAT(refused_, IsEmpty());
}

TEST_F(XTestTyperTest, AServerWithoutXTestIsAnError) {
  const test::VirtualDisplay poor({"-extension", "XTEST"});
  const auto typer = XTestTyper::open(loop_, ownKeys_, lock_, nullptr);
  ASSERT_FALSE(typer);
  EXPECT_EQ(typer.error(), "the X server has no XTEST extension");
}

}  // namespace
}  // namespace voxtrel::quillback
