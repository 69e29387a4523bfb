#include "quillback/insertion/x11/desktop/TypingFixture.h"

namespace voxtrel::quillback {
namespace {

/// Typing into other programs, of other toolkits.
class OtherProgramsTest : public TypingFixture, public ::testing::WithParamInterface<const char*> {
 protected:
  OtherProgramsTest() {
    file_ = folder_.path() / "typed.txt";
    setenv("LC_ALL", "C.UTF-8", 1);
    setenv("GSETTINGS_BACKEND", "memory", 1);
    setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent", 1);
    setenv("HOME", folder_.path().c_str(), 1);
    test::run(std::string("setxkbmap ") + GetParam());
  }

  /// The first large window on the screen.
  static xcb_window_t shownWindow() {
    const auto server = XConnection::open();
    const auto tree =
        server->reply<xcb_query_tree_reply_t>(xcb_query_tree(server->get(), server->root()));
    for (int i = 0; i < xcb_query_tree_children_length(tree.get()); ++i) {
      const xcb_window_t window = xcb_query_tree_children(tree.get())[i];
      const auto state = server->reply<xcb_get_window_attributes_reply_t>(
          xcb_get_window_attributes(server->get(), window));
      const auto size =
          server->reply<xcb_get_geometry_reply_t>(xcb_get_geometry(server->get(), window));
      if (state && state->map_state == XCB_MAP_STATE_VIEWABLE && size && size->width > 100) {
        return window;
      }
    }
    return XCB_NONE;
  }
  void start(const std::vector<std::string>& words) {
    field_.emplace(words);
    xcb_window_t window = XCB_NONE;
    ASSERT_TRUE(runUntil([&] { return (window = shownWindow()) != XCB_NONE && focus(window); }));
    runFor(std::chrono::milliseconds(500));  // until it has drawn itself
    focus(window);
  }
  /// The content after pressing the keys that save it.
  std::string saved(const std::string& keys, const std::string& expected) {
    for (int i = 0; i < 20 && content() != expected; ++i) {
      test::run("xdotool key " + keys);
      runFor(std::chrono::milliseconds(200));
    }
    return content();
  }
};
INSTANTIATE_TEST_SUITE_P(Layouts, OtherProgramsTest, ::testing::Values("us", "de", "fr"),
                         [](const auto& parameter) { return std::string(parameter.param); });

TEST_P(OtherProgramsTest, ATerminalGetsAnyText) {
  start({"xterm", "-u8", "-e", "cat > " + file_.string()});
  type(kEverything);
  type(kEverything);
  test::run("xdotool key Return");
  const std::string expected = kEverything + " " + kEverything + "\n";
  runUntil([&] { return content() == expected; });
  EXPECT_EQ(content(), expected);
}

TEST_P(OtherProgramsTest, AGtkEditorGetsAnyText) {
  std::ofstream(file_).flush();
  start({"mousepad", "--disable-server", file_.string()});
  type(kEverything);
  type(kEverything);
  EXPECT_EQ(saved("ctrl+s", kEverything + " " + kEverything), kEverything + " " + kEverything);
}

}  // namespace
}  // namespace voxtrel::quillback
