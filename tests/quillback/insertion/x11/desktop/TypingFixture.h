#pragma once

#include <filesystem>
#include <fstream>
#include <optional>

#include "quillback/insertion/x11/XTestTyper.h"
#include "support/FakeEnginePorts.h"
#include "support/ScratchFolder.h"
#include "support/X11Fixture.h"

namespace voxtrel::quillback {

inline const std::string kEverything = "Grüße, ñ, Ж, 你好, 😀 \"quotes\" \\ @ € | ~";

/// A test with a text field and a typer.
class TypingFixture : public X11Fixture {
 protected:
  void openField(const std::string& name = "field") {
    setenv("QT_QPA_PLATFORM", "xcb", 1);
    file_ = folder_.path() / name;
    field_.emplace(std::vector<std::string>{TEXT_FIELD, file_.string()});
    ASSERT_TRUE(runUntil([&] { return focusField() && std::filesystem::exists(file_); }));
  }
  /// Without a window manager the test sets the focus. False until the window exists.
  bool focusField() {
    std::ifstream in(file_.string() + ".window");
    xcb_window_t window = XCB_NONE;
    return in >> window && focus(window);
  }
  static bool focus(xcb_window_t window) {
    const auto server = XConnection::open();
    xcb_set_input_focus(server->get(), XCB_INPUT_FOCUS_PARENT, window, XCB_CURRENT_TIME);
    const auto now = focusedWindow(*server, XCB_NONE);
    return now && now->focus == window;
  }
  XTestTyper& typer() {
    if (!typer_) {
      auto opened = XTestTyper::open(
          loop_, ownKeys_, lock_,
          [this](const auto& text, const auto& why) { refused_.push_back(text + ": " + why); });
      if (!opened) throw std::runtime_error(opened.error());
      typer_ = std::move(*opened);
    }
    return *typer_;
  }
  std::string content() const {
    std::ifstream in(file_);
    return {std::istreambuf_iterator<char>(in), {}};
  }
  /// Types and waits until the keyboard is restored.
  void type(const std::string& text) {
    typer().type(text);
    ASSERT_TRUE(runUntil([&] { return typer().isIdle(); }));
  }
  /// The field's content after typing `text`, as soon as it is `expected`, else after the limit.
  std::string typed(const std::string& text, const std::string& expected) {
    type(text);
    runUntil([&] { return content() == expected; });
    return content();
  }
  std::string typed(const std::string& text) { return typed(text, text); }
  /// With xmodmap, because xkbcomp leaves out keys without a name.
  static std::string keymap() {
    return test::outputOf("xkbcomp $DISPLAY - 2>/dev/null") + test::outputOf("xmodmap -pke");
  }
  static std::vector<int> pressedKeys() {
    const auto server = XConnection::open();
    const auto keys = server->reply<xcb_query_keymap_reply_t>(xcb_query_keymap(server->get()));
    std::vector<int> pressed;
    for (int code = 0; code < 256; ++code) {
      if ((keys->keys[code / 8] >> (code % 8) & 1) != 0) pressed.push_back(code);
    }
    return pressed;
  }

  ScratchFolder folder_;
  test::FakeScreenLock lock_;
  std::filesystem::path file_;
  std::optional<test::RunningProgram> field_;
  std::unique_ptr<XTestTyper> typer_;
  std::vector<std::string> refused_;
};

}  // namespace voxtrel::quillback
