#include <optional>

#include "quillback/insertion/clipboard/X11Clipboard.h"
#include "quillback/insertion/clipboard/desktop/PasteFixture.h"

namespace voxtrel::quillback {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::SizeIs;

/// How long another program may take for handing over a few megabytes.
constexpr std::chrono::milliseconds kTransfer{500};

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

TEST_F(X11ClipboardTest, AnOfferIsThereOnceItsTypesWereAskedForAndReadsAreSeen) {
  const auto clipboard = X11Clipboard::open(loop_);
  std::vector<bool> offered;
  std::vector<std::string> read;
  clipboard->offer(
      {{"text/html", "<b>"}, {"UTF8_STRING", "b"}},
      [&](bool isThere) { offered.push_back(isThere); },
      [&](const std::string& type, Loop::TimePoint) { read.push_back(type); });
  runFor(kSettle);
  EXPECT_THAT(offered, IsEmpty());
  EXPECT_THAT(pasted("TARGETS"), HasSubstr("text/html"));
  EXPECT_THAT(offered, ElementsAre(true));
  EXPECT_THAT(read, IsEmpty());
  EXPECT_EQ(pasted("text/html"), "<b>");
  EXPECT_THAT(read, ElementsAre("text/html"));
}

TEST_F(X11ClipboardTest, AnOfferThatTheDesktopDoesNotAskForIsNotTaken) {
  const auto clipboard = X11Clipboard::open(loop_);
  std::vector<bool> offered;
  clipboard->offer({{"UTF8_STRING", "b"}}, [&](bool isThere) { offered.push_back(isThere); }, {});
  EXPECT_TRUE(runUntil([&] { return !offered.empty(); }));
  EXPECT_THAT(offered, ElementsAre(false));
  EXPECT_FALSE(clipboard->isDesktops());
  EXPECT_THAT(pasted("TARGETS"), HasSubstr("UTF8_STRING"));
  EXPECT_TRUE(clipboard->isDesktops());
}

TEST_F(X11ClipboardTest, ReadsWhatAnotherProgramHasCopiedAlsoInParts) {
  const auto clipboard = X11Clipboard::open(loop_);
  for (const std::size_t size : {std::size_t{10}, std::size_t{3'000'000}}) {
    const std::string theirs(size, 'x');
    test::run(
        "sh -c 'head -c " + std::to_string(size) +
        " /dev/zero | tr \"\\0\" x | xclip -selection clipboard -t image/png >/dev/null 2>&1'");
    ClipboardContent content;
    ASSERT_TRUE(runUntil([&] {
      clipboard->read([&](ClipboardContent read) { content = std::move(read); });
      runFor(kTransfer);
      return !content.empty() && content.front().second.size() == size;
    }));
    ASSERT_THAT(content, ElementsAre(Pair("image/png", SizeIs(size))));
    EXPECT_TRUE(content.front().second == theirs);
  }
}

TEST_F(X11ClipboardTest, WhatNoProgramHasCopiedIsEmpty) {
  const auto clipboard = X11Clipboard::open(loop_);
  std::optional<ClipboardContent> content;
  clipboard->read([&](ClipboardContent read) { content = std::move(read); });
  ASSERT_TRUE(runUntil([&] { return content.has_value(); }));
  EXPECT_THAT(*content, IsEmpty());
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
