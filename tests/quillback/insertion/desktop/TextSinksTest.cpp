#include "quillback/insertion/TextSinks.h"
#include "quillback/insertion/clipboard/desktop/PasteFixture.h"
#include "support/FakeEnginePorts.h"

namespace voxtrel::quillback {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class TextSinksTest : public PasteFixture {};

TEST_F(TextSinksTest, ClipboardCopiesAndPrintsOnceThatNotificationsFail) {
  setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent", 1);
  test::FakeOutput output;
  TextSinks sinks(loop_, ownKeys_, output);
  const auto sink = sinks.make(EngineSettings::Insert::clipboard, SessionKind::x11);
  sink->insert("one");
  EXPECT_TRUE(runUntil([&] { return !output.lines.empty(); }));
  sink->insert("two");
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
  sink->insert("no window listens");
  runFor(kSettle);
  EXPECT_EQ(pasted(), "no window listens");
}

TEST_F(TextSinksTest, UnderWaylandAFailedCopyIsAnErrorLine) {
  setenv("WAYLAND_DISPLAY", "nowhere-0", 1);
  setenv("XDG_RUNTIME_DIR", "/nonexistent", 1);
  setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent", 1);
  test::FakeOutput output;
  TextSinks sinks(loop_, ownKeys_, output);
  sinks.make(EngineSettings::Insert::type, SessionKind::wayland)->insert("words");
  EXPECT_TRUE(runUntil([&] { return output.lines.size() == 2; }));
  EXPECT_THAT(output.lines, ::testing::Contains(::testing::StartsWith("[quillback] ERROR")));
}

TEST_F(TextSinksTest, NoneInsertsNothing) {
  test::FakeOutput output;
  TextSinks sinks(loop_, ownKeys_, output);
  sinks.make(EngineSettings::Insert::none, SessionKind::x11)->insert("words");
  runFor(kSettle);
  EXPECT_THAT(output.lines, IsEmpty());
}

}  // namespace
}  // namespace voxtrel::quillback
