#include "quillback/insertion/clipboard/X11Clipboard.h"
#include "quillback/insertion/clipboard/desktop/PasteFixture.h"

namespace voxtrel::quillback {
namespace {

using ::testing::HasSubstr;

class X11ClipboardTest : public PasteFixture {};

TEST_F(X11ClipboardTest, OtherProgramsPasteTheLatestText) {
  const auto clipboard = X11Clipboard::open(loop_);
  ASSERT_TRUE(clipboard);
  clipboard->put("first");
  runFor(kSettle);
  EXPECT_EQ(pasted(), "first");
  clipboard->put("Grüße, 你好, 😀");
  runFor(kSettle);
  EXPECT_EQ(pasted(), "Grüße, 你好, 😀");
  EXPECT_EQ(pasted("text/plain;charset=utf-8"), "Grüße, 你好, 😀");
  EXPECT_THAT(pasted("TARGETS"), HasSubstr("UTF8_STRING"));
}

TEST_F(X11ClipboardTest, ALongTextIsPastedWhole) {
  const auto clipboard = X11Clipboard::open(loop_);
  const std::string text(1'000'000, 'x');
  clipboard->put(text);
  runFor(kSettle);
  EXPECT_EQ(pasted(), text);
}

TEST_F(X11ClipboardTest, AnotherProgramsCopyReplacesOurs) {
  const auto clipboard = X11Clipboard::open(loop_);
  clipboard->put("ours");
  runFor(kSettle);
  test::run("sh -c 'echo -n theirs | xclip -selection clipboard >/dev/null 2>&1'");
  runFor(kSettle);
  EXPECT_EQ(pasted(), "theirs");
  clipboard->put("ours again");
  runFor(kSettle);
  EXPECT_EQ(pasted(), "ours again");
}

TEST_F(X11ClipboardTest, AnUnknownTargetIsRefused) {
  const auto clipboard = X11Clipboard::open(loop_);
  clipboard->put("text");
  runFor(kSettle);
  EXPECT_THAT(pasted("image/png"), HasSubstr("not available"));
}

TEST_F(X11ClipboardTest, AServerThatDiesDoesNoHarm) {
  const auto clipboard = X11Clipboard::open(loop_);
  clipboard->put("text");
  display_.kill();
  runFor(kSettle);
  clipboard->put("more");
}

}  // namespace
}  // namespace voxtrel::quillback
