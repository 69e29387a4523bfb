#include <xcb/xtest.h>

#include "quillback/lock/KeyboardGrab.h"
#include "support/X11Fixture.h"

namespace voxtrel::quillback {
namespace {

constexpr xcb_keycode_t kSuper = 134;
constexpr xcb_keycode_t kOther = 38;

/// Another client, such as a lock screen.
class KeyboardGrabTest : public X11Fixture {
 protected:
  void grab() const {
    const auto reply = other_->reply<xcb_grab_keyboard_reply_t>(
        xcb_grab_keyboard(other_->get(), 0, other_->root(), XCB_CURRENT_TIME, XCB_GRAB_MODE_ASYNC,
                          XCB_GRAB_MODE_ASYNC));
    ASSERT_TRUE(reply);
    ASSERT_EQ(reply->status, XCB_GRAB_STATUS_SUCCESS);
  }
  /// Shows an unmanaged window over this part of the screen.
  xcb_window_t show(std::uint16_t width, std::uint16_t height,
                    std::uint8_t windowClass = XCB_WINDOW_CLASS_INPUT_OUTPUT) const {
    const std::uint32_t isUnmanaged = 1;
    const xcb_window_t window = xcb_generate_id(other_->get());
    xcb_create_window(other_->get(), XCB_COPY_FROM_PARENT, window, other_->root(), 0, 0, width,
                      height, 0, windowClass, XCB_COPY_FROM_PARENT, XCB_CW_OVERRIDE_REDIRECT,
                      &isUnmanaged);
    xcb_map_window(other_->get(), window);
    sync();
    return window;
  }
  void setType(xcb_window_t window, std::string_view type) const {
    const xcb_atom_t atom = other_->atom(type);
    xcb_change_property(other_->get(), XCB_PROP_MODE_REPLACE, window,
                        other_->atom("_NET_WM_WINDOW_TYPE"), XCB_ATOM_ATOM, 32, 1, &atom);
    sync();
  }
  xcb_window_t showMenu() const {
    const xcb_window_t menu = show(200, 400);
    setType(menu, "_NET_WM_WINDOW_TYPE_POPUP_MENU");
    return menu;
  }
  xcb_rectangle_t screen() const {
    const auto found =
        other_->reply<xcb_get_geometry_reply_t>(xcb_get_geometry(other_->get(), other_->root()));
    return {0, 0, found->width, found->height};
  }
  void press(xcb_keycode_t key, std::uint8_t event = XCB_KEY_PRESS) const {
    xcb_test_fake_input(other_->get(), event, key, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
    sync();
  }
  void sync() const {
    other_->reply<xcb_get_input_focus_reply_t>(xcb_get_input_focus(other_->get()));
  }

  std::unique_ptr<XConnection> other_ = XConnection::open();
  KeyboardGrab lock_;
};

TEST_F(KeyboardGrabTest, IsSeenFromItsBeginToItsEnd) {
  EXPECT_FALSE(lock_.isLocked());
  grab();
  EXPECT_TRUE(lock_.isLocked());
  xcb_ungrab_keyboard(other_->get(), XCB_CURRENT_TIME);
  sync();
  EXPECT_FALSE(lock_.isLocked());
}

TEST_F(KeyboardGrabTest, CanBeTakenWhileItIsLookedFor) {
  for (int i = 0; i < 100; ++i) EXPECT_FALSE(lock_.isLocked());
  grab();
  EXPECT_TRUE(lock_.isLocked());
}

TEST_F(KeyboardGrabTest, IsSeenWhileAKeyIsHeld) {
  press(kSuper);
  EXPECT_FALSE(lock_.isLocked());
  grab();
  EXPECT_TRUE(lock_.isLocked());
  press(kSuper, XCB_KEY_RELEASE);
}

TEST_F(KeyboardGrabTest, DoesNotCountWhileAKeyIsHeldThatAnotherProgramHasBound) {
  xcb_grab_key(other_->get(), 0, other_->root(), XCB_MOD_MASK_ANY, kSuper, XCB_GRAB_MODE_ASYNC,
               XCB_GRAB_MODE_ASYNC);
  sync();
  press(kSuper);
  EXPECT_FALSE(lock_.isLocked());
  press(kSuper, XCB_KEY_RELEASE);
  press(kOther);
  EXPECT_FALSE(lock_.isLocked());
  press(kOther, XCB_KEY_RELEASE);
}

TEST_F(KeyboardGrabTest, LeavesTheKeysOfOthersFree) {
  grab();
  press(kOther);
  EXPECT_TRUE(lock_.isLocked());
  press(kOther, XCB_KEY_RELEASE);
  const auto cookie = xcb_grab_key_checked(other_->get(), 0, other_->root(), XCB_MOD_MASK_ANY,
                                           kOther, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
  const XOwned<xcb_generic_error_t> refused(xcb_request_check(other_->get(), cookie));
  EXPECT_EQ(refused.get(), nullptr);
}

TEST_F(KeyboardGrabTest, DoesNotCountWhileAMenuIsOpen) {
  const xcb_window_t menu = showMenu();
  grab();
  EXPECT_FALSE(lock_.isLocked());
  xcb_unmap_window(other_->get(), menu);
  sync();
  EXPECT_TRUE(lock_.isLocked());
}

TEST_F(KeyboardGrabTest, CountsBesideASmallWindowThatIsNoMenu) {
  const xcb_window_t notification = show(300, 100);
  grab();
  EXPECT_TRUE(lock_.isLocked());
  setType(notification, "_NET_WM_WINDOW_TYPE_NOTIFICATION");
  EXPECT_TRUE(lock_.isLocked());
}

TEST_F(KeyboardGrabTest, CountsUnderAWindowThatCoversTheScreenAlsoWithAMenu) {
  showMenu();
  const xcb_rectangle_t whole = screen();
  const xcb_window_t locker = show(whole.width, whole.height);
  grab();
  EXPECT_TRUE(lock_.isLocked());
  xcb_destroy_window(other_->get(), locker);
  sync();
  EXPECT_FALSE(lock_.isLocked());
}

TEST_F(KeyboardGrabTest, CountsUnderWindowsThatCoverOneMonitorEach) {
  showMenu();
  const xcb_rectangle_t whole = screen();
  const auto half = static_cast<std::uint16_t>(whole.width / 2);
  show(half, whole.height);
  const std::uint32_t x = half;
  xcb_configure_window(other_->get(), show(half, whole.height), XCB_CONFIG_WINDOW_X, &x);
  grab();
  EXPECT_TRUE(lock_.isLocked());
}

TEST_F(KeyboardGrabTest, AnUnseenWindowOverTheScreenIsNoLock) {
  showMenu();
  const xcb_rectangle_t whole = screen();
  show(whole.width, whole.height, XCB_WINDOW_CLASS_INPUT_ONLY);
  grab();
  EXPECT_FALSE(lock_.isLocked());
}

TEST_F(KeyboardGrabTest, DoesNotCountInAVirtualMachinesWindow) {
  const xcb_window_t window = show(300, 200);
  constexpr std::string_view kClass("virt-manager\0Virt-manager\0", 26);
  xcb_change_property(other_->get(), XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_CLASS,
                      XCB_ATOM_STRING, 8, kClass.size(), kClass.data());
  grab();
  EXPECT_TRUE(lock_.isLocked());
  xcb_set_input_focus(other_->get(), XCB_INPUT_FOCUS_PARENT, window, XCB_CURRENT_TIME);
  sync();
  EXPECT_FALSE(lock_.isLocked());
}

TEST_F(KeyboardGrabTest, IsSeenOnAServerThatComesLater) {
  const std::string display = std::getenv("DISPLAY");
  setenv("DISPLAY", ":nowhere", 1);
  KeyboardGrab late;
  EXPECT_FALSE(late.isLocked());
  setenv("DISPLAY", display.c_str(), 1);
  EXPECT_FALSE(late.isLocked());
  grab();
  EXPECT_TRUE(late.isLocked());
}

TEST_F(KeyboardGrabTest, WithoutAServerNothingIsLocked) {
  setenv("DISPLAY", ":nowhere", 1);
  KeyboardGrab none;
  EXPECT_FALSE(none.isLocked());
}

}  // namespace
}  // namespace voxtrel::quillback
