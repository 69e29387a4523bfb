#include "quillback/insertion/TextSinks.h"
#include "quillback/insertion/clipboard/desktop/PasteFixture.h"
#include "support/FakeEnginePorts.h"
#include "support/KeyWindows.h"
#include "support/NotificationService.h"

namespace voxtrel::quillback {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

class TextSinksTest : public PasteFixture {
 protected:
  static EngineSettings settingsFor(EngineSettings::Insert insert) {
    EngineSettings settings;
    settings.insert = insert;
    return settings;
  }

  test::FakeScreenLock lock_;
};

TEST_F(TextSinksTest, ClipboardCopiesAndPrintsOnceThatNotificationsFail) {
  setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent", 1);
  test::FakeOutput output;
  TextSinks sinks(loop_, ownKeys_, lock_, output);
  const auto sink = sinks.make(settingsFor(EngineSettings::Insert::clipboard), SessionKind::x11);
  sink->insert("one", [] {});
  EXPECT_TRUE(runUntil([&] { return !output.lines.empty(); }));
  sink->insert("two", [] {});
  runFor(std::chrono::milliseconds(500));
  EXPECT_THAT(output.lines, ElementsAre(HasSubstr("No notification is shown")));
  EXPECT_EQ(pasted(), "two");
}

TEST_F(TextSinksTest, TheNotificationOfACopyHasTheWordsOnlyIfTheSettingsAskForIt) {
  const test::SessionBus bus;
  test::NotificationService service(loop_);
  test::FakeOutput output;
  TextSinks sinks(loop_, ownKeys_, lock_, output);
  EngineSettings settings = settingsFor(EngineSettings::Insert::clipboard);
  sinks.make(settings, SessionKind::x11)->insert("secret words", [] {});
  EXPECT_TRUE(runUntil([&] { return service.shown.size() == 1; }));
  EXPECT_EQ(service.shown.back().body, "");
  settings.notifyText = true;
  sinks.make(settings, SessionKind::x11)->insert("secret words", [] {});
  EXPECT_TRUE(runUntil([&] { return service.shown.size() == 2; }));
  EXPECT_EQ(service.shown.back().body, "secret words");
  EXPECT_THAT(output.lines, IsEmpty());
}

TEST_F(TextSinksTest, WhatCannotBeTypedIsCopied) {
  setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent", 1);
  test::FakeOutput output;
  TextSinks sinks(loop_, ownKeys_, lock_, output);
  const auto sink = sinks.make(settingsFor(EngineSettings::Insert::type), SessionKind::x11);
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
  const test::SessionBus bus;
  test::NotificationService service(loop_);
  test::KeyWindows windows;
  test::FakeOutput output;
  TextSinks sinks(loop_, ownKeys_, lock_, output);
  const auto sink = sinks.make(settingsFor(EngineSettings::Insert::type), SessionKind::x11);
  std::string text;
  for (int i = 0; text.size() < 500; ++i) text += std::to_string(i);
  sink->insert(text, [] {});
  ASSERT_TRUE(runUntil([&] { return windows.keys(0) > 0; }));
  windows.focus(1);
  EXPECT_TRUE(runUntil([&] { return !service.shown.empty() && !output.lines.empty(); }));
  runFor(kSettle);
  EXPECT_THAT(output.lines, ElementsAre("[quillback] What was not typed is copied: the focus moved "
                                        "to another window"));
  const std::string rest = pasted();
  EXPECT_EQ(rest, text.substr(windows.keys(0) + windows.keys(1)));
  EXPECT_FALSE(rest.empty());
  const std::string& body = service.shown.front().body;
  EXPECT_THAT(body, HasSubstr("the focus moved to another window"));
  EXPECT_THAT(body, Not(HasSubstr(rest.substr(0, 8))));
}

TEST_F(TextSinksTest, UnderWaylandAFailedCopyIsAnErrorLine) {
  setenv("WAYLAND_DISPLAY", "nowhere-0", 1);
  setenv("XDG_RUNTIME_DIR", "/nonexistent", 1);
  setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent", 1);
  test::FakeOutput output;
  TextSinks sinks(loop_, ownKeys_, lock_, output);
  sinks.make(settingsFor(EngineSettings::Insert::type), SessionKind::wayland)->insert("words", [] {
  });
  EXPECT_TRUE(runUntil([&] { return output.lines.size() == 2; }));
  EXPECT_THAT(output.lines, ::testing::Contains(::testing::StartsWith("[quillback] ERROR")));
}

TEST_F(TextSinksTest, NoneInsertsNothing) {
  test::FakeOutput output;
  TextSinks sinks(loop_, ownKeys_, lock_, output);
  sinks.make(settingsFor(EngineSettings::Insert::none), SessionKind::x11)->insert("words", [] {});
  runFor(kSettle);
  EXPECT_THAT(output.lines, IsEmpty());
}

}  // namespace
}  // namespace voxtrel::quillback
