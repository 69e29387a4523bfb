#include "quillback/insertion/TextSinks.h"
#include "quillback/insertion/clipboard/X11Clipboard.h"
#include "support/X11Test.h"

namespace voxtrel::quillback {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

struct Lines final : Output {
  void print(std::string_view line) override { lines.emplace_back(line); }
  std::vector<std::string> lines;
};

class ClipboardTest : public X11Test {
 protected:
  /// What another program pastes, while our loop runs.
  std::string pasted(const std::string& target = "UTF8_STRING") {
    const std::string file = testing::TempDir() + "pasted-" + std::to_string(getpid());
    const test::RunningProgram paste({"sh", "-c",
                                      "xclip -o -selection clipboard -t '" + target + "' > " +
                                          file + " 2>&1; touch " + file + ".done"});
    EXPECT_TRUE(runUntil([&] { return access((file + ".done").c_str(), F_OK) == 0; }));
    std::string text = test::outputOf("cat " + file);
    unlink(file.c_str());
    unlink((file + ".done").c_str());
    return text;
  }
};

TEST_F(ClipboardTest, OtherProgramsPasteTheLatestText) {
  const auto clipboard = X11Clipboard::open(loop_);
  ASSERT_TRUE(clipboard);
  clipboard->put("first");
  runFor(kQuiet);
  EXPECT_EQ(pasted(), "first");
  clipboard->put("Grüße, 你好, 😀");
  runFor(kQuiet);
  EXPECT_EQ(pasted(), "Grüße, 你好, 😀");
  EXPECT_EQ(pasted("text/plain;charset=utf-8"), "Grüße, 你好, 😀");
  EXPECT_THAT(pasted("TARGETS"), HasSubstr("UTF8_STRING"));
}

TEST_F(ClipboardTest, ALongTextIsPastedWhole) {
  const auto clipboard = X11Clipboard::open(loop_);
  const std::string text(1'000'000, 'x');
  clipboard->put(text);
  runFor(kQuiet);
  EXPECT_EQ(pasted(), text);
}

TEST_F(ClipboardTest, SomebodyElsesCopyReplacesOurs) {
  const auto clipboard = X11Clipboard::open(loop_);
  clipboard->put("ours");
  runFor(kQuiet);
  test::run("sh -c 'echo -n theirs | xclip -selection clipboard >/dev/null 2>&1'");
  runFor(kQuiet);
  EXPECT_EQ(pasted(), "theirs");
  clipboard->put("ours again");
  runFor(kQuiet);
  EXPECT_EQ(pasted(), "ours again");
}

TEST_F(ClipboardTest, AnUnknownKindOfTextIsRefused) {
  const auto clipboard = X11Clipboard::open(loop_);
  clipboard->put("text");
  runFor(kQuiet);
  EXPECT_THAT(pasted("image/png"), HasSubstr("not available"));
}

TEST_F(ClipboardTest, TheServersDeathIsSilent) {
  const auto clipboard = X11Clipboard::open(loop_);
  clipboard->put("text");
  display_.kill();
  runFor(kQuiet);
  clipboard->put("more");
}

TEST_F(ClipboardTest, TheClipboardsSinkCopiesAndSaysOnceThatNobodyShowsNotifications) {
  setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent", 1);
  Lines output;
  TextSinks sinks(loop_, ownKeys_, output);
  const auto sink = sinks.make(EngineSettings::Insert::clipboard, SessionKind::x11);
  sink->insert("one");
  EXPECT_TRUE(runUntil([&] { return !output.lines.empty(); }));
  sink->insert("two");
  runFor(std::chrono::milliseconds(500));
  EXPECT_THAT(output.lines, ElementsAre(HasSubstr("notify-send")));
  EXPECT_EQ(pasted(), "two");
}

TEST_F(ClipboardTest, WhatCannotBeTypedIsCopied) {
  setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent", 1);
  Lines output;
  TextSinks sinks(loop_, ownKeys_, output);
  const auto sink = sinks.make(EngineSettings::Insert::type, SessionKind::x11);
  const auto server = XConnection::open();
  xcb_set_input_focus(server->get(), XCB_INPUT_FOCUS_NONE, XCB_NONE, XCB_CURRENT_TIME);
  server->flush();
  runFor(kQuiet);
  sink->insert("nobody listens");
  runFor(kQuiet);
  EXPECT_EQ(pasted(), "nobody listens");
}

TEST_F(ClipboardTest, UnderWaylandAMissingHelperIsAnErrorLine) {
  setenv("WAYLAND_DISPLAY", "nowhere-0", 1);
  setenv("XDG_RUNTIME_DIR", "/nonexistent", 1);
  setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent", 1);
  Lines output;
  TextSinks sinks(loop_, ownKeys_, output);
  sinks.make(EngineSettings::Insert::type, SessionKind::wayland)->insert("words");
  EXPECT_TRUE(runUntil([&] { return output.lines.size() == 2; }));
  EXPECT_THAT(output.lines, ::testing::Contains(::testing::StartsWith("[quillback] ERROR")));
}

TEST_F(ClipboardTest, NoneGoesNowhere) {
  Lines output;
  TextSinks sinks(loop_, ownKeys_, output);
  sinks.make(EngineSettings::Insert::none, SessionKind::x11)->insert("words");
  runFor(kQuiet);
  EXPECT_THAT(output.lines, IsEmpty());
}

}  // namespace
}  // namespace voxtrel::quillback
