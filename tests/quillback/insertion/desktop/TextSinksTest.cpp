#include "quillback/insertion/TextSinks.h"
#include "quillback/insertion/clipboard/desktop/PasteFixture.h"
#include "support/FakeEnginePorts.h"
#include "support/KeyWindows.h"

namespace voxtrel::quillback {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
namespace fs = std::filesystem;

class TextSinksTest : public PasteFixture {};

TEST_F(TextSinksTest, ClipboardCopiesAndPrintsOnceThatNotificationsFail) {
  setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent", 1);
  test::FakeOutput output;
  TextSinks sinks(loop_, ownKeys_, output);
  const auto sink = sinks.make(EngineSettings::Insert::clipboard, SessionKind::x11);
  sink->insert("one", [] {});
  EXPECT_TRUE(runUntil([&] { return !output.lines.empty(); }));
  sink->insert("two", [] {});
  runFor(std::chrono::milliseconds(500));
  EXPECT_THAT(output.lines, ElementsAre(HasSubstr("notify-send")));
  EXPECT_EQ(pasted(), "two");
}

TEST_F(TextSinksTest, WhatCannotBeTypedIsCopied) {
  setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent", 1);
  test::FakeOutput output;
  TextSinks sinks(loop_, ownKeys_, output);
  const auto sink = sinks.make(EngineSettings::Insert::type, SessionKind::x11);
  const auto server = XConnection::open();
  xcb_set_input_focus(server->get(), XCB_INPUT_FOCUS_NONE, XCB_NONE, XCB_CURRENT_TIME);
  server->flush();
  runFor(kSettle);
  sink->insert("no window listens", [] {});
  runFor(kSettle);
  EXPECT_EQ(pasted(), "no window listens");
  EXPECT_THAT(output.lines, ::testing::Contains("[quillback] What was not typed is copied: no "
                                                "window has the focus"));
}

TEST_F(TextSinksTest, AfterAFocusChangeTheRestIsCopiedAndTheNotificationSaysWhyWithoutIt) {
  const ScratchFolder folder;
  const fs::path notified = folder.path() / "notified";
  const fs::path notifier =
      folder.write("notify-send", "#!/bin/sh\nprintf '%s\\n' \"$@\" > " + notified.string() + "\n");
  fs::permissions(notifier, fs::perms::owner_all);
  const std::string path = std::getenv("PATH");
  setenv("PATH", (folder.path().string() + ":" + path).c_str(), 1);
  test::KeyWindows windows;
  test::FakeOutput output;
  TextSinks sinks(loop_, ownKeys_, output);
  const auto sink = sinks.make(EngineSettings::Insert::type, SessionKind::x11);
  std::string text;
  for (int i = 0; text.size() < 500; ++i) text += std::to_string(i);
  sink->insert(text, [] {});
  ASSERT_TRUE(runUntil([&] { return windows.keys(0) > 0; }));
  windows.focus(1);
  EXPECT_TRUE(runUntil([&] { return fs::exists(notified) && !output.lines.empty(); }));
  runFor(kSettle);
  setenv("PATH", path.c_str(), 1);
  EXPECT_THAT(output.lines, ElementsAre("[quillback] What was not typed is copied: the focus moved "
                                        "to another window"));
  const std::string rest = pasted();
  EXPECT_EQ(rest, text.substr(windows.keys(0) + windows.keys(1)));
  EXPECT_FALSE(rest.empty());
  const std::string notification = test::outputOf("cat " + notified.string());
  EXPECT_THAT(notification, HasSubstr("the focus moved to another window"));
  EXPECT_THAT(notification, Not(HasSubstr(rest.substr(0, 8))));
}

TEST_F(TextSinksTest, UnderWaylandAFailedCopyIsAnErrorLine) {
  setenv("WAYLAND_DISPLAY", "nowhere-0", 1);
  setenv("XDG_RUNTIME_DIR", "/nonexistent", 1);
  setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent", 1);
  test::FakeOutput output;
  TextSinks sinks(loop_, ownKeys_, output);
  sinks.make(EngineSettings::Insert::type, SessionKind::wayland)->insert("words", [] {});
  EXPECT_TRUE(runUntil([&] { return output.lines.size() == 2; }));
  EXPECT_THAT(output.lines, ::testing::Contains(::testing::StartsWith("[quillback] ERROR")));
}

TEST_F(TextSinksTest, NoneInsertsNothing) {
  test::FakeOutput output;
  TextSinks sinks(loop_, ownKeys_, output);
  sinks.make(EngineSettings::Insert::none, SessionKind::x11)->insert("words", [] {});
  runFor(kSettle);
  EXPECT_THAT(output.lines, IsEmpty());
}

}  // namespace
}  // namespace voxtrel::quillback
