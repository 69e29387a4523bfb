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

TEST_F(KeyboardGrabTest, WithoutAServerNothingIsLocked) {
  setenv("DISPLAY", ":nowhere", 1);
  KeyboardGrab none;
  EXPECT_FALSE(none.isLocked());
}

}  // namespace
}  // namespace voxtrel::quillback
